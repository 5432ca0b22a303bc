// SPDX-License-Identifier: Apache-2.0
// The live screen of `plex top` with a content that fails when a key is pressed: `u` as it is updated, `d` as
// it is drawn, `o` as it obeys the key, `x` with what is no exception of the program's own. Its topic is
// called like the last key.
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <tools/plex/Failure.hpp>
#include <tools/plex/Interrupt.hpp>
#include <tools/plex/TopScreen.hpp>

namespace
{

using namespace ovra::plex::tool;

class Content
{
public:
    TopContent functions()
    {
        return {[this] { failAt("u"); },
                [this]() -> const TopState& {
                    failAt("d");
                    return state_;
                },
                [this](const ftxui::Event& event) {
                    if (!event.is_character()) {
                        return false;
                    }
                    key_ = event.input();
                    failAt("o");
                    state_.topics.front().name = key_;
                    return true;
                }};
    }

private:
    void failAt(const std::string& key) const
    {
        if (key_ == key) {
            throw Failure(ExitCode::NotFound, "it fails at " + key);
        }
        if (key_ == "x") {
            throw std::runtime_error("something else");
        }
    }

    TopState state_{0, 1, {TopTopic{"none", "", 0, 0, 0.0, 0.0, 0, {}, {}, true}}, {}, {}, false, {}, {}};
    std::string key_;
};

} // namespace

int main()
{
    installInterrupt();
    return exitCodeOf([] {
        Content content;
        showOnScreen(content.functions());
        return EXIT_SUCCESS;
    });
}
