#pragma once

#include "catalog/App.h"
#include "catalog/AppNameList.h"
#include "catalog/DesktopApp.h"
#include "catalog/ExcludeList.h"
#include "catalog/Package.h"
#include "support/Allocations.h"
#include "support/Names.h"
#include "support/Test.h"
#include "support/XmlText.h"

#include <cerrno>
#include <initializer_list>
#include <memory>
#include <ostream>
#include <stdexcept>

namespace test {

using namespace testing;

inline std::vector<std::wstring> DisplayNames(const OwnedList<CQanhApp>& apps)
{
    std::vector<std::wstring> names;
    for (const auto& app : apps) {
        names.emplace_back(app->DisplayName.c_str());
    }
    return names;
}

inline void ExpectNames(const CQanhDesktopApp& app, const wchar_t* displayName, const wchar_t* lnkFileName,
                        const wchar_t* localizeName, const wchar_t* rubyDisplayName)
{
    EXPECT_STREQ(app.DisplayName.c_str(), displayName);
    EXPECT_STREQ(app.LnkFileName.c_str(), lnkFileName);
    EXPECT_STREQ(app.LocalizeName.c_str(), localizeName);
    EXPECT_STREQ(app.RubyDisplayName.c_str(), rubyDisplayName);
}

inline void ExpectFlags(const CQanhDesktopApp& app, BOOL needReserve, BOOL isInstalled, BOOL isDualMode)
{
    EXPECT_EQ(app.NeedReserve, needReserve);
    EXPECT_EQ(app.IsInstalled, isInstalled);
    EXPECT_EQ(app.IsDualMode, isDualMode);
}

// A package with these applications, installed and not reserved.
inline std::unique_ptr<CQanhPackage> Package(const std::wstring& familyName,
                                             const std::vector<std::wstring>& apps = {})
{
    auto package = std::make_unique<CQanhPackage>(familyName.c_str(), RecordVersion(), FALSE, TRUE);
    for (const std::wstring& app : apps) {
        EXPECT_EQ(package->AddApplication(app.c_str(), nullptr), S_OK);
    }
    return package;
}

// What a record made of one wanted name.
struct SearchAnswer
{
    HRESULT result = E_UNEXPECTED;
    BOOL found = 7; // neither true nor false: shows whether it was touched
    std::vector<std::wstring> excluded;

    friend bool operator==(const SearchAnswer&, const SearchAnswer&) = default;
    friend void PrintTo(const SearchAnswer& answer, std::ostream* out)
    {
        *out << "result 0x" << std::hex << answer.result << ", found " << answer.found << ", excluded "
             << testing::PrintToString(answer.excluded);
    }
};

inline const SearchAnswer kNothing{S_OK, 0, {}};
inline const SearchAnswer kFound{S_OK, 1, {}};
inline SearchAnswer Excluding(std::vector<std::wstring> excluded, HRESULT result = S_OK)
{
    return {result, 0, std::move(excluded)};
}

inline HRESULT Search(const CQanhApp& app, const wchar_t* wantedName, ExcludeList* pExcluded, BOOL* pFound)
{
    return app.AddToExcludeAppNameList(wantedName, pExcluded, pFound);
}
inline HRESULT Search(const CQanhAppNameList& list, const wchar_t* wantedName, ExcludeList* pExcluded,
                      BOOL* pFound)
{
    return list.GetExcludeAppNameList(wantedName, pExcluded, pFound);
}

// Asks a record or a whole catalogue, with an exclude list that holds these names already.
template <typename Record>
SearchAnswer Ask(const Record& record, const wchar_t* wantedName,
                 const std::vector<const wchar_t*>& listed = {})
{
    ExcludeList list;
    for (const wchar_t* name : listed) {
        EXPECT_EQ(list.AddUnique(name), S_OK);
    }
    SearchAnswer answer;
    answer.result = Search(record, wantedName, &list, &answer.found);
    answer.excluded = Names(list);
    return answer;
}

// A search with an argument that is null or empty touches nothing.
template <typename Record> void ExpectArgumentChecks(const Record& record)
{
    ExcludeList list;
    BOOL found = 7;
    EXPECT_EQ(Search(record, nullptr, &list, &found), E_POINTER);
    EXPECT_EQ(Search(record, L"mail", nullptr, &found), E_POINTER);
    EXPECT_EQ(Search(record, L"mail", &list, nullptr), E_POINTER);
    EXPECT_EQ(Search(record, L"", nullptr, &found), E_POINTER);
    EXPECT_EQ(Search(record, L"", &list, nullptr), E_POINTER);
    EXPECT_EQ(Search(record, L"", &list, &found), E_INVALIDARG);
    EXPECT_EQ(found, 7);
    EXPECT_TRUE(list.IsEmpty());
}

// The first adding fails; then there is memory again.
inline SearchAnswer AskWithFailingAdding(const CQanhApp& app, const wchar_t* wantedName)
{
    ExcludeList list;
    SearchAnswer answer;
    const WantedName wanted(wantedName);
    const Attempt attempt = TryWithFailingAllocation(
        0, [&] { return app.AddToExcludeAppNameList(wanted, &list, &answer.found); });
    EXPECT_TRUE(attempt.failed);
    answer.result = attempt.result;
    answer.excluded = Names(list);
    return answer;
}

// As long as one of these lives, the library can make no copy of a wanted name, or not lower it.
struct NoCopies
{
    ImportPatch<wchar_t* (*)(const wchar_t*)> patch{"_wcsdup",
                                                    [](const wchar_t*) -> wchar_t* { return nullptr; }};
};
struct NoLowering
{
    ImportPatch<errno_t (*)(wchar_t*, std::size_t)> patch{
        "_wcslwr_s", [](wchar_t*, std::size_t) -> errno_t { return EINVAL; }};
};

// Watches the one copy of a wanted name that the library makes, until the end of the scope. One at a time.
class CopyWatch
{
public:
    CopyWatch() { s_copies = s_freed = 0; }

    // The copy, when exactly one was made and freed once.
    [[nodiscard]] static std::wstring Freed()
    {
        return s_copies == 1 && s_freed == 1 ? s_copy : L"not one copy that was freed";
    }

private:
    static wchar_t* Duplicate(const wchar_t* text)
    {
        ++s_copies;
        wcscpy_s(s_copy, std::size(s_copy), text);
        return s_copy;
    }
    static void Free(void* block)
    {
        static const auto s_free =
            standin::FunctionOf<void (*)(void*)>(GetModuleHandleW(L"msvcrt.dll"), "free");
        if (block == s_copy) {
            ++s_freed;
        } else {
            s_free(block);
        }
    }

    static inline wchar_t s_copy[64];
    static inline int s_copies = 0;
    static inline int s_freed = 0;

    ImportPatch<wchar_t* (*)(const wchar_t*)> m_duplicate{"_wcsdup", Duplicate};
    ImportPatch<void (*)(void*)> m_free{"free", Free};
};

// A record that tells its owner's test what is done with it.
class RecordProbe : public CQanhApp
{
public:
    using Events = std::vector<std::wstring>;

    RecordProbe(const wchar_t* name, Events* pEvents) : CQanhApp(name, nullptr), m_pEvents(pEvents) {}
    ~RecordProbe() override { Note(L"deleted "); }

    HRESULT AddToExcludeAppNameList(const WantedName& wantedName, ExcludeList* pExcludeList,
                                    BOOL* pFound) const override
    {
        Note(L"asked ");
        onAsked();
        foundBefore = *pFound;
        wanted = wantedName.Text();
        *pFound = answersFound;
        if (addsItsName) {
            EXPECT_EQ(pExcludeList->AddUnique(DisplayName.c_str()), S_OK);
        }
        return result;
    }

    HRESULT ToXmlNode(IXmlWriter*) const override
    {
        Note(L"written ");
        return result;
    }

    BOOL answersFound = FALSE;
    bool addsItsName = false;
    HRESULT result = S_OK;
    std::function<void()> onAsked = [] {};
    mutable BOOL foundBefore = 7;
    mutable std::wstring wanted;

private:
    void Note(const wchar_t* what) const { m_pEvents->push_back(std::wstring(what) + DisplayName.c_str()); }

    Events* m_pEvents;
};

// A package that tells when it is deleted.
class PackageProbe : public CQanhPackage
{
public:
    PackageProbe(const wchar_t* familyName, std::function<void()> onDelete)
        : CQanhPackage(familyName, RecordVersion(), FALSE, TRUE), m_onDelete(std::move(onDelete))
    {
    }
    ~PackageProbe() override { m_onDelete(); }

private:
    std::function<void()> m_onDelete;
};

// The catalogue's file.

// Writes the text to a file and loads that.
inline HRESULT LoadText(CQanhAppNameList& list, std::string_view text)
{
    const TemporaryFolder folder;
    const std::wstring path = folder / L"AppNameList.xml";
    WriteFileBytes(path, text);
    return list.Load(path.c_str());
}

// The bytes of the file that the catalogue is saved to.
inline std::string SavedText(const CQanhAppNameList& list)
{
    const TemporaryFolder folder;
    const std::wstring path = folder / L"AppNameList.xml";
    if (list.Save(path.c_str()) != S_OK) {
        throw std::runtime_error("the catalogue cannot be saved");
    }
    return ReadFileBytes(path);
}

// A whole file as the platform's writer lays it out, from the lines inside of the root. The root is never
// closed.
inline std::string Document(std::initializer_list<std::string_view> lines)
{
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<Applications>";
    for (const std::string_view line : lines) {
        text += "\r\n";
        text += line;
    }
    return text;
}

// What the catalogue is saved to without the file's frame: its records in one line.
inline std::string SavedRecords(const CQanhAppNameList& list)
{
    const std::string saved = SavedText(list);
    const std::string head = Document({});
    EXPECT_EQ(saved.substr(0, head.size()), head);
    std::string records;
    for (const std::string& line : Split(saved.substr(head.size()), "\r\n")) {
        const std::string element = line.substr(std::min(line.find('<'), line.size()));
        if (element.find("MetroApps") == std::string::npos &&
            element.find("DesktopApps") == std::string::npos) {
            records += element;
        }
    }
    return records;
}

} // namespace test
