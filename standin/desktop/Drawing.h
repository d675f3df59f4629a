#pragma once

#include <windows.h>

#include <string>
#include <string_view>

// Drawing helpers of the desktop's windows; used on the windows' thread.
namespace standin {

enum class Align
{
    Left,
    Centre
};

// A size and weight of the desktop's type. Text that the main font has no glyphs for, Japanese above all, is
// drawn in a second font, piece by piece.
class Typeface
{
public:
    enum class Weight
    {
        Light,
        Regular
    };

    Typeface(int height, Weight weight); // height in pixels
    ~Typeface();
    Typeface(const Typeface&) = delete;
    Typeface& operator=(const Typeface&) = delete;

    // Draws one line, centred vertically in place; what does not fit ends in an ellipsis.
    void Draw(HDC context, const RECT& place, std::wstring_view text, COLORREF colour, Align align) const;

    // The font for a control that can use one only: the second one as soon as the text needs it.
    [[nodiscard]] HFONT FontFor(std::wstring_view text) const;

private:
    template <typename Visit> void ForEachPiece(HDC context, std::wstring_view text, Visit visit) const;
    [[nodiscard]] int WidthOf(HDC context, std::wstring_view text) const;

    HFONT m_main;
    HFONT m_second;
};

void FillColour(HDC context, const RECT& place, COLORREF colour);

// A paint cycle of a window: what is drawn into Context() appears at once, without flicker, at the end.
class Painting
{
public:
    explicit Painting(HWND window);
    ~Painting();
    Painting(const Painting&) = delete;
    Painting& operator=(const Painting&) = delete;

    [[nodiscard]] HDC Context() const noexcept { return m_memory; }
    [[nodiscard]] const RECT& Client() const noexcept { return m_client; }

private:
    HWND m_window;
    PAINTSTRUCT m_paint = {};
    RECT m_client = {};
    HDC m_memory;
    HBITMAP m_bitmap;
    HGDIOBJ m_before;
};

} // namespace standin
