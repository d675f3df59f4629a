#include "standin/desktop/Drawing.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace standin {

namespace {

constexpr const wchar_t* lightFonts[] = {L"Segoe UI Light", L"Open Sans Light", L"DejaVu Sans Light"};
constexpr const wchar_t* regularFonts[] = {L"Segoe UI", L"Open Sans", L"DejaVu Sans", L"Tahoma"};
constexpr const wchar_t* japaneseFonts[] = {L"Yu Gothic UI", L"Meiryo UI",        L"MS UI Gothic",
                                            L"VL PGothic",   L"Noto Sans CJK JP", L"IPAPGothic",
                                            L"TakaoPGothic", L"VL Gothic"};

int CALLBACK RememberFont(const LOGFONTW* font, const TEXTMETRICW*, DWORD, LPARAM data)
{
    auto& name = *reinterpret_cast<std::wstring*>(data);
    if (font->lfFaceName[0] == L'@') {
        return 1; // a font for vertical writing: look further
    }
    name = font->lfFaceName;
    return 0;
}

std::wstring FirstFont(const wchar_t* name, BYTE charset)
{
    LOGFONTW wanted = {};
    wanted.lfCharSet = charset;
    lstrcpynW(wanted.lfFaceName, name, LF_FACESIZE);
    std::wstring found;
    const HDC screen = GetDC(nullptr);
    EnumFontFamiliesExW(screen, &wanted, &RememberFont, reinterpret_cast<LPARAM>(&found), 0);
    ReleaseDC(nullptr, screen);
    return found;
}

template <size_t count> std::wstring FirstInstalled(const wchar_t* const (&names)[count], BYTE charset)
{
    for (const wchar_t* name : names) {
        if (!FirstFont(name, DEFAULT_CHARSET).empty()) {
            return name;
        }
    }
    return FirstFont(L"", charset);
}

HFONT CreateTypeface(int height, int weight, const std::wstring& name)
{
    return CreateFontW(-height, 0, 0, 0, weight, FALSE, FALSE, FALSE, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS,
                       CLIP_DEFAULT_PRECIS, ANTIALIASED_QUALITY, DEFAULT_PITCH | FF_SWISS, name.c_str());
}

std::vector<WORD> GlyphsOf(HDC context, std::wstring_view text)
{
    std::vector<WORD> glyphs(text.size());
    if (text.empty() || GetGlyphIndicesW(context, text.data(), static_cast<int>(text.size()), glyphs.data(),
                                         GGI_MARK_NONEXISTING_GLYPHS) == GDI_ERROR) {
        std::fill(glyphs.begin(), glyphs.end(), static_cast<WORD>(0));
    }
    return glyphs;
}

constexpr WORD noGlyph = 0xFFFF;

} // namespace

Typeface::Typeface(int height, Weight weight)
{
    static const std::wstring light = FirstInstalled(lightFonts, ANSI_CHARSET);
    static const std::wstring regular = FirstInstalled(regularFonts, ANSI_CHARSET);
    static const std::wstring japanese = FirstInstalled(japaneseFonts, SHIFTJIS_CHARSET);
    const bool isLight = weight == Weight::Light;
    m_main = CreateTypeface(height, isLight ? FW_LIGHT : FW_NORMAL, isLight ? light : regular);
    m_second = CreateTypeface(height, FW_NORMAL, japanese);
}

Typeface::~Typeface()
{
    DeleteObject(m_main);
    DeleteObject(m_second);
}

// Calls visit(piece, its width) with the piece's font selected.
template <typename Visit> void Typeface::ForEachPiece(HDC context, std::wstring_view text, Visit visit) const
{
    const HGDIOBJ before = SelectObject(context, m_main);
    const std::vector<WORD> glyphs = GlyphsOf(context, text);
    for (size_t start = 0; start < text.size();) {
        const bool isMain = glyphs[start] != noGlyph;
        size_t end = start + 1;
        while (end < text.size() && (glyphs[end] != noGlyph) == isMain) {
            ++end;
        }
        SelectObject(context, isMain ? m_main : m_second);
        const std::wstring_view piece = text.substr(start, end - start);
        SIZE size = {};
        GetTextExtentPoint32W(context, piece.data(), static_cast<int>(piece.size()), &size);
        visit(piece, static_cast<int>(size.cx));
        start = end;
    }
    SelectObject(context, before);
}

int Typeface::WidthOf(HDC context, std::wstring_view text) const
{
    int width = 0;
    ForEachPiece(context, text, [&width](std::wstring_view, int pieceWidth) { width += pieceWidth; });
    return width;
}

void Typeface::Draw(HDC context, const RECT& place, std::wstring_view text, COLORREF colour,
                    Align align) const
{
    const int room = static_cast<int>(place.right - place.left);
    std::wstring shown(text);
    int width = WidthOf(context, shown);
    for (size_t length = text.size(); width > room && length > 0;) {
        --length;
        shown = std::wstring(text.substr(0, length)) + L"\u2026";
        width = WidthOf(context, shown);
    }

    const HGDIOBJ before = SelectObject(context, m_main);
    TEXTMETRICW metrics = {};
    GetTextMetricsW(context, &metrics);
    SelectObject(context, before);

    int x = place.left + (align == Align::Centre ? (room - width) / 2 : 0);
    const int y = static_cast<int>((place.top + place.bottom - metrics.tmHeight) / 2 + metrics.tmAscent);
    SetTextAlign(context, TA_LEFT | TA_BASELINE);
    SetBkMode(context, TRANSPARENT);
    SetTextColor(context, colour);
    ForEachPiece(context, shown, [context, &x, y](std::wstring_view piece, int pieceWidth) {
        TextOutW(context, x, y, piece.data(), static_cast<int>(piece.size()));
        x += pieceWidth;
    });
}

HFONT Typeface::FontFor(std::wstring_view text) const
{
    const HDC screen = GetDC(nullptr);
    const HGDIOBJ before = SelectObject(screen, m_main);
    const std::vector<WORD> glyphs = GlyphsOf(screen, text);
    SelectObject(screen, before);
    ReleaseDC(nullptr, screen);
    return std::find(glyphs.begin(), glyphs.end(), noGlyph) == glyphs.end() ? m_main : m_second;
}

void FillColour(HDC context, const RECT& place, COLORREF colour)
{
    const HBRUSH brush = CreateSolidBrush(colour);
    FillRect(context, &place, brush);
    DeleteObject(brush);
}

Painting::Painting(HWND window) : m_window(window)
{
    const HDC screen = BeginPaint(window, &m_paint);
    GetClientRect(window, &m_client);
    m_memory = CreateCompatibleDC(screen);
    m_bitmap = CreateCompatibleBitmap(screen, m_client.right, m_client.bottom);
    m_before = SelectObject(m_memory, m_bitmap);
}

Painting::~Painting()
{
    BitBlt(m_paint.hdc, 0, 0, m_client.right, m_client.bottom, m_memory, 0, 0, SRCCOPY);
    SelectObject(m_memory, m_before);
    DeleteObject(m_bitmap);
    DeleteDC(m_memory);
    EndPaint(m_window, &m_paint);
}

} // namespace standin
