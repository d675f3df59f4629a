// The reader that asks the system's interfaces takes whatever these answer: failures anywhere, names that are
// missing, empty or long, no applications or many. What it reads are the names that were told.

#include "Fuzzing.h"
#include "SystemManifest.h"
#include "catalog/MetroApp.h"
#include "catalog/Package.h"
#include "manifest/ManifestReader.h"

#include <objbase.h>

#include <algorithm>
#include <vector>

const char fuzz::kName[] = "the reader by the system's interfaces";

namespace {

using fuzz::Check;

HRESULT Answer(proof::Bytes& bytes)
{
    static constexpr HRESULT answers[] = {E_FAIL, E_OUTOFMEMORY, static_cast<HRESULT>(0x80080203)};
    const unsigned choice = bytes.Take();
    return choice < 20 ? answers[choice % 3] : S_OK;
}

HRESULT GiveName(proof::Bytes& bytes, wchar_t** value, std::vector<std::wstring>& told)
{
    const HRESULT hr = Answer(bytes);
    if (FAILED(hr)) {
        return hr;
    }
    const unsigned length = bytes.TakeNumber() % 3000;
    told.emplace_back();
    // A success without a text, too.
    *value = length == 1 ? nullptr : static_cast<wchar_t*>(CoTaskMemAlloc((length + 1) * sizeof(wchar_t)));
    if (*value) {
        std::fill_n(*value, length, static_cast<wchar_t>(1 + bytes.TakeNumber() % 0xFFFF));
        (*value)[length] = L'\0';
        told.back() = *value;
    }
    return hr;
}

} // namespace

void fuzz::Run(proof::Bytes bytes)
{
    std::vector<std::wstring> told;
    HRESULT end = S_OK; // of the last answer that can end the list
    native::SystemManifest system;
    system.open = [&] { return end = Answer(bytes); };
    system.getHasCurrent = [&](BOOL* hasCurrent) {
        *hasCurrent = bytes.IsEmpty() ? FALSE : TRUE;
        return end = Answer(bytes);
    };
    system.getCurrent = [&] { return Answer(bytes); };
    system.getDisplayName = [&](wchar_t** value) { return GiveName(bytes, value, told); };
    system.moveNext = [&](BOOL* hasNext) {
        *hasNext = bytes.Pick(2) == 0 ? FALSE : TRUE;
        return end = Answer(bytes);
    };
    native::SetFile(L"manifest", "");
    native::SetSystemManifest(system);
    const std::size_t limit = bytes.Pick(4) == 0 ? 2 : kListSizeLimit;
    CQanhPackage package(L"family", L"full name", L"name", RecordVersion(), limit);
    Check(CQanhManifestReader::GetAppNameUsingAPI(L"manifest", &package) == end,
          "the result is the last one's");
    Check(native::SystemManifest::s_alive == 0, "every object of the system is released");

    told.resize(std::min(told.size(), limit));
    std::vector<std::wstring> names;
    for (const auto& app : package.Apps()) {
        names.emplace_back(app->DisplayName.View());
        Check(static_cast<const CQanhMetroApp&>(*app).ShortName.empty(), "there are no short names");
    }
    Check(names == told, "the names are those that were told, as far as a list keeps them");
}
