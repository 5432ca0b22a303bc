// SPDX-License-Identifier: Apache-2.0
#include "TopScreen.hpp"

#include "Interrupt.hpp"

#include <chrono>
#include <ftxui/component/component.hpp>
#include <ftxui/component/loop.hpp>
#include <ftxui/component/screen_interactive.hpp>
#include <ftxui/screen/terminal.hpp>
#include <thread>

namespace ovra::plex::tool
{

namespace
{

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds drawingInterval{250};

} // namespace

void showOnScreen(const TopContent& content)
{
    auto screen = ftxui::ScreenInteractive::Fullscreen();
    screen.TrackMouse(false);
    const auto component =
        ftxui::Renderer([&] { return draw(content.state(), ftxui::Terminal::Size().dimx); }) |
        ftxui::CatchEvent([&](const ftxui::Event& event) {
            if (event == ftxui::Event::Character('q')) {
                screen.Exit();
                return true;
            }
            return content.obey(event);
        });
    ftxui::Loop loop(&screen, component); // restores the terminal as it goes, and at Ctrl-C and SIGTERM
    for (auto drawn = Clock::time_point(); !loop.HasQuitted() && !isInterrupted();) {
        content.update();
        if (Clock::now() - drawn >= drawingInterval) {
            drawn = Clock::now();
            screen.PostEvent(ftxui::Event::Custom);
        }
        loop.RunOnce();
        std::this_thread::sleep_for(longestWait);
    }
}

} // namespace ovra::plex::tool
