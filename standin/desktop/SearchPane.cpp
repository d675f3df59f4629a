#include "standin/desktop/SearchPane.h"

#include "standin/Names.h"
#include "standin/Settings.h"
#include "standin/desktop/Query.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace standin {

namespace {

constexpr COLORREF background = RGB(0x00, 0x25, 0x2E);
constexpr COLORREF highlight = RGB(0x00, 0x8A, 0x9B);
constexpr COLORREF white = RGB(0xFF, 0xFF, 0xFF);
constexpr COLORREF pale = RGB(0x9F, 0xC4, 0xCA);
constexpr COLORREF fieldText = RGB(0x10, 0x20, 0x24);

// All in pixels.
constexpr int paneWidth = 346;
constexpr int margin = 40;
constexpr RECT headingPlace = {margin, 32, paneWidth - margin, 82};
constexpr RECT scopePlace = {margin, 88, paneWidth - margin, 116};
constexpr RECT fieldPlace = {margin, 128, paneWidth - margin, 162};
constexpr int hitsTop = 190;
constexpr int hitHeight = 44;

constexpr WPARAM pasteCharacter = 0x16; // Ctrl+V

} // namespace

SearchPane::SearchPane(Chosen chosen, Events events)
    : ApplicationWindow(std::move(chosen)), m_events(std::move(events)), m_editBrush(CreateSolidBrush(white)),
      m_heading(34, Typeface::Weight::Light), m_scope(19, Typeface::Weight::Light),
      m_text(16, Typeface::Weight::Regular)
{
}

SearchPane::~SearchPane()
{
    Destroy(); // before what its messages use
    DeleteObject(m_editBrush);
}

bool SearchPane::Create()
{
    const int width = GetSystemMetrics(SM_CXSCREEN);
    const RECT place = {width - paneWidth, 0, width, GetSystemMetrics(SM_CYSCREEN)};
    if (!CreateHandle(searchPaneClass, L"Search", WS_POPUP | WS_CLIPCHILDREN, WS_EX_TOOLWINDOW, place)) {
        return false;
    }
    m_edit = CreateWindowExW(0, L"EDIT", L"", WS_CHILD | WS_VISIBLE | ES_AUTOHSCROLL, fieldPlace.left + 8,
                             fieldPlace.top + 6, fieldPlace.right - fieldPlace.left - 16,
                             fieldPlace.bottom - fieldPlace.top - 12, Handle(), nullptr,
                             GetModuleHandleW(nullptr), nullptr);
    if (!m_edit) {
        return false;
    }
    UseFont(m_text.FontFor(L""));
    SetWindowLongPtrW(m_edit, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    m_editProcedure = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(m_edit, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&SearchPane::OnEditMessage)));
    return true;
}

void SearchPane::Open(std::vector<Application> applications)
{
    m_applications = std::move(applications);
    m_lostPastes = 0;
    // 0 is the largest there is: queries grow with the catalogue.
    SendMessageW(m_edit, EM_SETLIMITTEXT, GetSetting(Setting::FieldLimit), 0);
    SetWindowTextW(m_edit, L"");
    OnTextChanged();
    ShowWindow(Handle(), SW_SHOW);
    SetForegroundWindow(Handle());
    SetFocus(m_edit);
    UpdateWindow(Handle());
}

LRESULT SearchPane::OnMessage(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_SETFOCUS:
        SetFocus(m_edit);
        return 0;
    case WM_COMMAND:
        if (m_edit && reinterpret_cast<HWND>(lParam) == m_edit && HIWORD(wParam) == EN_CHANGE) {
            OnTextChanged();
        }
        return 0;
    case WM_CTLCOLOREDIT:
        SetTextColor(reinterpret_cast<HDC>(wParam), fieldText);
        SetBkColor(reinterpret_cast<HDC>(wParam), white);
        return reinterpret_cast<LRESULT>(m_editBrush);
    case WM_CLOSE:
        m_events.dismissed();
        return 0;
    default:
        return ApplicationWindow::OnMessage(message, wParam, lParam);
    }
}

LRESULT CALLBACK SearchPane::OnEditMessage(HWND edit, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto& pane = *reinterpret_cast<SearchPane*>(GetWindowLongPtrW(edit, GWLP_USERDATA));
    if (pane.FilterEditMessage(message, wParam)) {
        return 0;
    }
    return CallWindowProcW(pane.m_editProcedure, edit, message, wParam, lParam);
}

bool SearchPane::FilterEditMessage(UINT message, WPARAM wParam)
{
    switch (message) {
    case WM_KEYDOWN:
        if (wParam == VK_RETURN) {
            Submit();
            return true;
        }
        if (wParam == VK_ESCAPE) {
            m_events.dismissed();
            return true;
        }
        if (wParam == VK_INSERT && GetKeyState(VK_SHIFT) < 0) {
            Paste();
            return true;
        }
        return false;
    case WM_CHAR:
        if (wParam == pasteCharacter) {
            Paste();
            return true;
        }
        // The field would beep at these.
        return wParam == VK_RETURN || wParam == VK_ESCAPE || wParam == VK_TAB;
    case WM_PASTE:
        Paste();
        return true;
    default:
        return false;
    }
}

void SearchPane::Paste()
{
    if (m_lostPastes < GetSetting(Setting::LosePastes)) {
        ++m_lostPastes;
        m_events.pasteLost();
        return;
    }
    CallWindowProcW(m_editProcedure, m_edit, WM_PASTE, 0, 0);
    m_events.pasted(Text());
}

void SearchPane::Submit()
{
    if (m_shown.empty()) {
        m_events.submitted(Text(), nullptr);
        return;
    }
    const Application hit = m_shown.front(); // the list may change while it is being started
    m_events.submitted(Text(), &hit);
}

void SearchPane::OnTextChanged()
{
    const std::wstring text = Text();
    const Query query(text);
    m_shown.clear();
    std::copy_if(m_applications.begin(), m_applications.end(), std::back_inserter(m_shown),
                 [&query](const Application& application) { return query.Hits(application.name); });
    UseFont(m_text.FontFor(text));
    InvalidateRect(Handle(), nullptr, FALSE);
}

void SearchPane::UseFont(HFONT font)
{
    if (reinterpret_cast<HFONT>(SendMessageW(m_edit, WM_GETFONT, 0, 0)) != font) {
        SendMessageW(m_edit, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
        SendMessageW(m_edit, EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN, 0); // every font brings its own
    }
}

std::wstring SearchPane::Text() const
{
    std::wstring text(static_cast<size_t>(GetWindowTextLengthW(m_edit)) + 1, L'\0');
    text.resize(static_cast<size_t>(GetWindowTextW(m_edit, text.data(), static_cast<int>(text.size()))));
    return text;
}

void SearchPane::Paint()
{
    const Painting painting(Handle());
    const HDC context = painting.Context();
    const RECT& client = painting.Client();
    FillColour(context, client, background);
    m_heading.Draw(context, headingPlace, L"Search", white, Align::Left);
    m_scope.Draw(context, scopePlace, L"Apps", pale, Align::Left);
    FillColour(context, fieldPlace, white);
    for (size_t index = 0; index < m_shown.size(); ++index) {
        RECT place = PlaceOf(index, client);
        if (place.top >= client.bottom) {
            break;
        }
        if (index == 0) {
            FillColour(context, place, highlight);
        }
        place.left = margin;
        place.right -= 16;
        m_text.Draw(context, place, m_shown[index].name, white, Align::Left);
    }
    if (m_shown.empty() && GetWindowTextLengthW(m_edit) > 0) {
        const RECT place = {margin, hitsTop, client.right - margin, hitsTop + hitHeight};
        m_text.Draw(context, place, L"No apps match your search.", pale, Align::Left);
    }
}

RECT SearchPane::PlaceOf(size_t index, const RECT& client) const
{
    const LONG top = hitsTop + static_cast<LONG>(index) * hitHeight;
    return {0, top, client.right, top + hitHeight};
}

} // namespace standin
