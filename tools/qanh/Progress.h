#pragma once

#include <cstddef>
#include <string>

// One line on standard error that is written anew again and again, on a console only, and not when NO_COLOR
// is set. Gone at the end of its life.
class Progress
{
public:
    Progress();
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Show(const std::wstring& text);

private:
    bool m_isShown;
    std::size_t m_width = 0; // of what stands there
};
