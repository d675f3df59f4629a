#pragma once

#include "support/Current.h"
#include "support/ImportPatch.h"

#include <windows.h>

#include <shlwapi.h>

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace test {

// The resources of packages, as the shell finds them for the library in this program, until the end of the
// scope. What is not in them cannot be loaded. One at a time.
class FakeResources : private Current<FakeResources>
{
public:
    struct Request
    {
        std::wstring source;
        UINT size;
        bool wasEmpty; // the buffer, in all of its 256 characters
        wchar_t* buffer;
        void** reserved;
    };

    // The sources that were asked for, in order.
    [[nodiscard]] std::vector<std::wstring> Sources() const
    {
        std::vector<std::wstring> sources;
        for (const Request& request : requests) {
            sources.push_back(request.source);
        }
        return sources;
    }

    std::map<std::wstring, std::wstring> texts; // by source
    std::vector<Request> requests;
    HRESULT success = S_OK;
    std::optional<std::wstring> leftOver; // what a failure leaves in the buffer
    std::function<void()> onLoad;
    // Notes nothing: for tests in which every allocation of the thread counts.
    bool isQuiet = false;

private:
    static HRESULT WINAPI Load(const wchar_t* source, wchar_t* buffer, UINT size, void** reserved)
    {
        FakeResources& self = *s_current;
        if (self.onLoad) {
            self.onLoad();
        }
        if (!self.isQuiet) {
            const bool isEmpty =
                std::all_of(buffer, buffer + size, [](wchar_t character) { return character == L'\0'; });
            self.requests.push_back({source, size, isEmpty, buffer, reserved});
        }
        for (const auto& [known, text] : self.texts) {
            if (known == source) {
                lstrcpynW(buffer, text.c_str(), static_cast<int>(size));
                return self.success;
            }
        }
        if (self.leftOver) {
            lstrcpynW(buffer, self.leftOver->c_str(), static_cast<int>(size));
        }
        return HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
    }

    friend Current<FakeResources>;
    ImportPatch<decltype(&SHLoadIndirectString)> m_patch{"SHLoadIndirectString", Load};
};

} // namespace test
