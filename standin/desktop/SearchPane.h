#pragma once

#include "standin/desktop/ApplicationWindow.h"
#include "standin/desktop/Drawing.h"

#include <functional>
#include <string>
#include <vector>

namespace standin {

// The pane at the right edge with an edit field and the applications that its text hits, kept up to date
// while the text changes. Owned by the desktop and used on its thread.
class SearchPane : public ApplicationWindow
{
public:
    struct Events
    {
        // Enter was pressed; hit is the top one, null: there is none.
        std::function<void(const std::wstring& text, const Application* hit)> submitted;
        std::function<void()> dismissed;                      // Escape was pressed
        std::function<void(const std::wstring& text)> pasted; // text: the field's, after the paste
        std::function<void()> pasteLost;
    };

    // chosen: a hit was clicked.
    SearchPane(Chosen chosen, Events events);
    ~SearchPane() override;

    [[nodiscard]] bool Create(); // hidden at first

    // With an empty field, in the foreground, the field focused.
    void Open(std::vector<Application> applications);

protected:
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    static LRESULT CALLBACK OnEditMessage(HWND edit, UINT message, WPARAM wParam, LPARAM lParam);

    // True: the message is dealt with.
    bool FilterEditMessage(UINT message, WPARAM wParam);
    void Paste();
    void Submit();
    void OnTextChanged();
    void UseFont(HFONT font);
    [[nodiscard]] std::wstring Text() const;
    void Paint() override;
    [[nodiscard]] RECT PlaceOf(size_t index, const RECT& client) const override;

    Events m_events;
    std::vector<Application> m_applications;
    HWND m_edit = nullptr;
    WNDPROC m_editProcedure = nullptr;
    HBRUSH m_editBrush;
    DWORD m_lostPastes = 0; // since the pane was opened
    Typeface m_heading;
    Typeface m_scope;
    Typeface m_text;
};

} // namespace standin
