#pragma once

#include "standin/desktop/Applications.h"
#include "standin/desktop/Drawing.h"
#include "standin/desktop/Window.h"

#include <functional>
#include <vector>

namespace standin {

// The full-screen window with a tile for each application. Owned by the desktop and used on its thread.
// Whether it is visible is what the app-visibility object tells every process as the launcher's visibility.
class StartScreen : public Window
{
public:
    struct Events
    {
        std::function<void(const Application&)> chosen; // a tile was clicked
        std::function<void()> closed;                   // the window was asked to close: the desktop ends
    };

    explicit StartScreen(Events events);

    [[nodiscard]] bool Create(); // hidden at first

    [[nodiscard]] bool IsShown() const noexcept;
    void Show(std::vector<Application> applications); // in the foreground
    void Hide();

protected:
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    void Paint();
    void PaintTile(HDC context, size_t index, const RECT& place) const;
    [[nodiscard]] RECT PlaceOfTile(size_t index, const RECT& client) const;
    [[nodiscard]] const Application* TileAt(POINT point) const;

    Events m_events;
    std::vector<Application> m_applications;
    Typeface m_heading;
    Typeface m_letter;
    Typeface m_name;
};

} // namespace standin
