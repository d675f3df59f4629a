#include "standin/desktop/StartScreen.h"

#include "standin/Names.h"

#include <iterator>
#include <utility>

namespace standin {

namespace {

constexpr COLORREF background = RGB(0x00, 0x3B, 0x47);
constexpr COLORREF white = RGB(0xFF, 0xFF, 0xFF);
constexpr COLORREF tileColours[] = {RGB(0x00, 0x8A, 0x9B), RGB(0x2D, 0x7D, 0x46), RGB(0xB4, 0x47, 0x1E),
                                    RGB(0x5A, 0x3E, 0x99), RGB(0x1F, 0x62, 0xB0), RGB(0x9C, 0x2A, 0x5D),
                                    RGB(0x00, 0x76, 0x6A), RGB(0x8A, 0x6A, 0x12)};

// All in pixels.
constexpr int leftMargin = 100;
constexpr int topMargin = 168;
constexpr int bottomMargin = 60;
constexpr int tileWidth = 232;
constexpr int tileHeight = 112;
constexpr int tileGap = 8;
constexpr int namePadding = 12;

// A pair of surrogates is one letter.
std::wstring_view FirstLetter(const std::wstring& name)
{
    const bool isPair = name.size() > 1 && IS_SURROGATE_PAIR(name[0], name[1]);
    return std::wstring_view(name).substr(0, isPair ? 2 : 1);
}

} // namespace

StartScreen::StartScreen(Chosen chosen, std::function<void()> closed)
    : ApplicationWindow(std::move(chosen)), m_closed(std::move(closed)),
      m_heading(54, Typeface::Weight::Light), m_letter(48, Typeface::Weight::Light),
      m_name(15, Typeface::Weight::Regular)
{
}

bool StartScreen::Create()
{
    const RECT screen = {0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
    return CreateHandle(startScreenClass, L"Start", WS_POPUP, WS_EX_TOOLWINDOW, screen);
}

void StartScreen::Show(std::vector<Application> applications)
{
    m_shown = std::move(applications);
    ShowWindow(Handle(), SW_SHOW);
    SetForegroundWindow(Handle());
    InvalidateRect(Handle(), nullptr, FALSE);
    UpdateWindow(Handle());
}

LRESULT StartScreen::OnMessage(UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_CLOSE) {
        m_closed();
        return 0;
    }
    return ApplicationWindow::OnMessage(message, wParam, lParam);
}

void StartScreen::Paint()
{
    const Painting painting(Handle());
    const HDC context = painting.Context();
    const RECT& client = painting.Client();
    FillColour(context, client, background);
    const RECT heading = {leftMargin, 52, client.right, 132};
    m_heading.Draw(context, heading, L"Start", white, Align::Left);
    for (size_t index = 0; index < m_shown.size(); ++index) {
        const RECT place = PlaceOf(index, client);
        if (place.left >= client.right) {
            break;
        }
        PaintTile(context, index, place);
    }
}

void StartScreen::PaintTile(HDC context, size_t index, const RECT& place) const
{
    const std::wstring& name = m_shown[index].name;
    FillColour(context, place, tileColours[index % std::size(tileColours)]);
    const RECT letterPlace = {place.left, place.top + 8, place.right, place.bottom - 36};
    m_letter.Draw(context, letterPlace, FirstLetter(name), white, Align::Centre);
    const RECT namePlace = {place.left + namePadding, place.bottom - 34, place.right - namePadding,
                            place.bottom - 8};
    m_name.Draw(context, namePlace, name, white, Align::Left);
}

// Tiles fill columns from the top, the columns go to the right.
RECT StartScreen::PlaceOf(size_t index, const RECT& client) const
{
    const int room = static_cast<int>(client.bottom) - topMargin - bottomMargin + tileGap;
    const int rows = room > tileHeight + tileGap ? room / (tileHeight + tileGap) : 1;
    const int column = static_cast<int>(index) / rows;
    const int row = static_cast<int>(index) % rows;
    const LONG left = leftMargin + column * (tileWidth + tileGap);
    const LONG top = topMargin + row * (tileHeight + tileGap);
    return {left, top, left + tileWidth, top + tileHeight};
}

} // namespace standin
