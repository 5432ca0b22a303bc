// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "TopView.hpp"

#include <ftxui/component/event.hpp>
#include <functional>

namespace ovra::plex::tool
{

/// What the live screen shows and does. All is called by the thread of showOnScreen().
struct TopContent {
    std::function<void()> update;                  ///< takes what has come; called again and again
    std::function<const TopState&()> state;        ///< what is known now; called to draw it
    std::function<bool(const ftxui::Event&)> obey; ///< @returns whether a key means something
};

/// Shows it on the whole terminal until `q` is pressed or the command is interrupted. However it ends, also
/// by what the functions throw, the terminal is then as it was before.
void showOnScreen(const TopContent& content);

} // namespace ovra::plex::tool
