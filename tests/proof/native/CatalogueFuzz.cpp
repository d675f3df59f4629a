// Any file can be read as a catalogue, with readers that fail or stand still at any call too. What was read
// can be saved and is read back as it was.

#include "FaultyReader.h"
#include "Fuzzing.h"
#include "Platform.h"
#include "catalog/AppNameList.h"
#include "catalog/ExcludeList.h"

const char fuzz::kName[] = "the catalogue's reader";

namespace {

std::string Saved(const CQanhAppNameList& list)
{
    fuzz::Check(list.Save(L"saved") == S_OK, "a catalogue can be saved");
    return native::FileBytes(L"saved");
}

// Read back, without the records that are not in the file.
std::string SavedAgain(const std::string& saved)
{
    native::SetFile(L"again", saved);
    CQanhAppNameList list;
    fuzz::Check(list.Load(L"again") == S_FALSE, "what was saved is read to its end");
    return Saved(list);
}

void Ask(const CQanhAppNameList& list)
{
    for (const wchar_t* wanted : {L"mail", L"A", L"-", L"\u30E1"}) {
        ExcludeList excluded;
        BOOL found = FALSE;
        fuzz::Check(list.GetExcludeAppNameList(wanted, &excluded, &found) == S_OK,
                    "there is an exclude list");
    }
    for (const WideString& name : list.PackageFamilyNames()) {
        fuzz::Check(name.empty() || list.GetPackage(name.c_str()), "each package is found by its name");
    }
    for (const WideString& path : list.DesktopShortcuts()) {
        fuzz::Check(path.empty() || list.IsInDesktopAppList(path.c_str()),
                    "each shortcut is found by its path");
    }
}

} // namespace

void fuzz::Run(proof::Bytes bytes)
{
    const unsigned kind = bytes.Take();
    native::Fault fault;
    if (kind % 4 == 0) {
        fault = {1 + bytes.TakeNumber() % 2000, bytes.Pick(4) == 0 ? S_OK : E_FAIL};
    }
    std::string text = kind % 16 == 1 ? std::string(bytes.Rest()) : proof::DocumentMaker(bytes).Catalogue();
    native::SetFile(L"file", std::move(text));
    native::SetReaderFault(fault);
    // Lists can be full.
    CQanhAppNameList list(kind % 32 == 2 ? 3 : kListSizeLimit);
    const HRESULT read = list.Load(L"file");
    native::SetReaderFault({});
    Check(read == S_FALSE || FAILED(read), "a catalogue's reading comes to an end");
    Ask(list);

    const std::string first = Saved(list);
    const std::string second = SavedAgain(first);
    // Build and revision trade places each time.
    Check(second.size() == first.size() && SavedAgain(second) == first,
          "saving, reading and saving is stable");

    if (fault.call == 0 && kind % 32 != 2 && kind % 4 == 1) {
        CQanhAppNameList reloaded;
        Check(reloaded.Reload(L"file") == read, "the file is read the same way again");
        Check(Saved(reloaded) == first, "the same records are read again");
    }
}
