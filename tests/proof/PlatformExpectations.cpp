#include "proof/PlatformExpectations.h"

#include "QanHelper.h"

#include <algorithm>

namespace {

using proof::Expectation;
using Do = proof::Operation;

constexpr int kAny = -1;
constexpr std::string_view kMonitorFails = "QanhInitialize OUT(s_MonitorMode.Initialize : hr=";
constexpr std::string_view kManagerFails = "QanhInitialize OUT(s_PackageManager.Initialize : hr=";
constexpr std::string_view kNoMutex = "CQanhPackageManager::Initialize CreateMutex() failed. ";
constexpr std::string_view kNotLoaded = "m_AppNameList.Load() failed. ErrCode = 0x";
constexpr std::string_view kNotFound =
    "CQanhPackageManager::FindPackageByName OUT(GetPackageManager failed.)";
constexpr std::string_view kNotFoundEx =
    "CQanhPackageManager::FindPackageByNameEx OUT(GetPackageManager failed.)";
constexpr std::string_view kSaveFails = "pPyxPackageManager->m_AppNameList.Save() failed. ErrCode = 0x";

constexpr Expectation kExpectations[] = {
    // The failure is the start's.
    {Do::Start, "CoInitializeEx", kAny, {}, "", kMonitorFails},
    {Do::Start, "CoCreateInstance", kAny, {}, "", kMonitorFails},
    {Do::Start, "CreateEventW", kAny, E_FAIL, "", "CreateEventW() failed. ErrCode = "},
    {Do::Start, "CreateThread", kAny, E_FAIL, "", "CreateThread() failed. ErrCode = "},
    {Do::Start, "GetModuleHandleExW", kAny, E_FAIL, "", "CreateThread() failed. ErrCode = "},
    // Without the mutex that says who owns the catalogue it is loaded and not refreshed; the other one is for
    // the turn at the file.
    {Do::Start, "CreateMutexW", 0, S_FALSE, "", kNoMutex},
    // An owner's thread finds again what could not be loaded.
    {Do::Start, "SHCreateStreamOnFileW", kAny, S_OK, "", kNotLoaded},
    {Do::Start, "CreateXmlReader", kAny, S_OK, "", kNotLoaded},

    {Do::StartBeside, "CoInitializeEx", kAny, {}, "", kMonitorFails},
    {Do::StartBeside, "CoCreateInstance", kAny, {}, "", kMonitorFails},
    {Do::StartBeside, "CreateMutexW", 0, S_FALSE, "", kNoMutex},
    {Do::StartBeside, "SHCreateStreamOnFileW", kAny, {}, "", kManagerFails},
    {Do::StartBeside, "CreateXmlReader", kAny, {}, "", kManagerFails},
    // The first path is the log's, the second the mutex's: without it, it has another name, which nobody
    // holds. The last one is the preset's.
    {Do::StartBeside, "GetModuleFileNameW", 1, S_OK, "", "CreateMutex() success. "},
    {Do::StartBeside, "GetModuleFileNameW", 3, E_FAIL, "", kManagerFails},

    // A package manager that cannot be had counts as "not installed"; one that does not answer is a failure.
    {Do::IsInstalled, "RoInitialize", 1, S_OK, "0", kNotFound},
    {Do::IsInstalled, "RoGetActivationFactory", kAny, S_OK, "0", kNotFound},
    {Do::IsInstalled, "WindowsCreateStringReference", 0, S_OK, "0", kNotFound},
    {Do::IsInstalled, "WindowsCreateStringReference", 1, E_FAIL, "7", "QanhIsInstalled OUT(0x80004005)"},
    {Do::IsInstalledById, "RoInitialize", 1, S_OK, "0", kNotFoundEx},
    {Do::IsInstalledById, "RoGetActivationFactory", kAny, S_OK, "0", kNotFoundEx},
    {Do::IsInstalledById, "WindowsCreateStringReference", 0, S_OK, "0", kNotFoundEx},
    {Do::IsInstalledById, "WindowsCreateStringReference", 1, E_FAIL, "7",
     "QanhIsInstalledByAppUserModeID OUT(0x80004005)"},
    {Do::DisplayName, "RoInitialize", 1, QANH_E_NO_PACKAGE, "(null)", kNotFound},
    {Do::DisplayName, "RoGetActivationFactory", kAny, QANH_E_NO_PACKAGE, "(null)", kNotFound},
    {Do::DisplayName, "WindowsCreateStringReference", 0, QANH_E_NO_PACKAGE, "(null)", kNotFound},
    {Do::DisplayName, "WindowsCreateStringReference", 1, E_FAIL, "(null)",
     "CQanhPackageManager::GetAppDisplayNameByPFN OUT("},
    {Do::DisplayName, "CreateXmlReader", kAny, {}, "(null)", "CQanhManifestReader::GetAppDisplayName OUT("},
    {Do::DisplayName,
     "SHCreateStreamOnFileW",
     kAny,
     {},
     "(null)",
     "CQanhManifestReader::GetAppDisplayName OUT("},
    {Do::DisplayName, "LocalAlloc", kAny, E_OUTOFMEMORY, "(null)",
     "CQanhManifestReader::GetAppDisplayName OUT(0x8007000E)"},
    // The second way of asking does not find this text.
    {Do::DisplayName, "SHLoadIndirectString", 0, E_FAIL, "",
     "CQanhManifestReader::GetAppDisplayName OUT(0x80004005)"},

    // A launch goes on with what the clipboard holds.
    {Do::Search, "OpenClipboard", 0, S_OK, "", "CQanhClipboard::SetClipboardData OUT(0x80004005)"},
    {Do::Search, "GlobalAlloc", kAny, S_OK, "", "ERROR GlobalAlloc(GHND, szLen) Failed"},
    {Do::Search, "GlobalLock", kAny, S_OK, "", "ERROR GlobalLock(hg) Failed"},
    {Do::Search, "SetClipboardData", kAny, S_OK, "",
     "ERROR SetClipboardData(CF_UNICODETEXT, hg) Failed. ErrCode = "},
    {Do::Search, "_wcsdup", kAny, S_OK, "", "AddToExcludeAppNameList OUT(0x8007000E)"},
    {Do::Search, "_wcslwr_s", kAny, S_OK, "", "AddToExcludeAppNameList OUT(0x80004005)"},

    {Do::Activate, "CoCreateInstance", kAny, {}, "", "QanhLaunchByManager("},

    // The first variable is the catalogue's; without the Start menu's the thread ends.
    {Do::Pass, "GetEnvironmentVariableW", 1, 2011, "", ""},
    {Do::Pass, "GetEnvironmentVariableW", 2, 2011, "", ""},
    {Do::Pass, "CreateXmlWriter", kAny, 0, "", kSaveFails},
    {Do::PassOfPlatform, "GetEnvironmentVariableW", 1, 2011, "", ""},
    {Do::PassOfPlatform, "GetEnvironmentVariableW", 2, 2011, "", ""},
    {Do::PassOfPlatform, "SHCreateStreamOnFileEx", kAny, 0, "",
     "CQanhAppNameList::AddMetroPackage Error (0x"},
};

} // namespace

namespace proof {

const Expectation* FindExpectation(Operation operation, std::string_view function, std::size_t call)
{
    const auto* const found =
        std::find_if(std::begin(kExpectations), std::end(kExpectations), [&](const Expectation& expectation) {
            return expectation.operation == operation && expectation.function == function &&
                   (expectation.call < 0 || static_cast<std::size_t>(expectation.call) == call);
        });
    return found == std::end(kExpectations) ? nullptr : found;
}

} // namespace proof
