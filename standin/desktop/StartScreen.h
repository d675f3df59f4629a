#pragma once

#include "standin/desktop/ApplicationWindow.h"
#include "standin/desktop/Drawing.h"

#include <functional>
#include <vector>

namespace standin {

// The full-screen window with a tile for each application. Owned by the desktop and used on its thread.
// Whether it is visible is what the app-visibility object tells every process as the launcher's visibility.
class StartScreen : public ApplicationWindow
{
public:
    // chosen: a tile was clicked; closed: the window was asked to close, the desktop ends.
    StartScreen(Chosen chosen, std::function<void()> closed);

    [[nodiscard]] bool Create(); // hidden at first

    void Show(std::vector<Application> applications); // in the foreground

protected:
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    void Paint() override;
    void PaintTile(HDC context, size_t index, const RECT& place) const;
    [[nodiscard]] RECT PlaceOf(size_t index, const RECT& client) const override;

    std::function<void()> m_closed;
    Typeface m_heading;
    Typeface m_letter;
    Typeface m_name;
};

} // namespace standin
