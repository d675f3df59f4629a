// Launches ask the catalogue for their exclude lists while its records change without a pause. Each list must
// be the one that holds at some moment between the question and the answer: no record half changed, none
// forgotten, none twice.

#include "Platform.h"
#include "SystemPackage.h"
#include "catalog/AppNameList.h"
#include "catalog/ExcludeList.h"
#include "common/DiagnosticLog.h"
#include "proof/Proof.h"
#include "standin/Text.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int kPackages = 12;
constexpr int kDesktopApps = 12;
constexpr wchar_t kFile[] = L"catalogue";

std::wstring Number(int number)
{
    const std::string digits = std::to_string(number);
    return std::wstring(digits.begin(), digits.end());
}

// What the catalogue holds, kept by the changing thread beside it.
struct Model
{
    struct Package
    {
        int number;
        int version;
        bool isInstalled;
    };
    struct DesktopApp
    {
        int number;
        bool isInstalled;
    };
    std::vector<Package> packages;
    std::vector<DesktopApp> desktopApps;

    // What a search for "app" must exclude.
    [[nodiscard]] std::wstring ExcludeNames() const
    {
        std::wstring names;
        for (const Package& package : packages) {
            for (int app = 0; package.isInstalled && app < Apps(package); ++app) {
                names += DisplayName(package, app) + L";s " + DisplayName(package, app) + L";";
            }
        }
        for (const DesktopApp& app : desktopApps) {
            if (app.isInstalled) {
                names += DisplayName(app) + L";";
            }
        }
        return names;
    }

    // Versions differ in how many applications they have, too.
    [[nodiscard]] static int Apps(const Package& package) { return 1 + package.version % 3; }
    [[nodiscard]] static std::wstring DisplayName(const Package& package, int app)
    {
        return L"app " + Number(package.number) + L" of " + Number(package.version) + L" " + Number(app);
    }
    [[nodiscard]] static std::wstring DisplayName(const DesktopApp& app)
    {
        return L"desk app " + Number(app.number);
    }
};

// The lists that held, one after the other. The changing thread says beforehand what will hold, so that every
// list that can be seen is known: those from Done() before a question to Begun() after its answer.
class History
{
public:
    void Begin(std::wstring names)
    {
        const std::lock_guard lock(m_mutex);
        m_lists.push_back(std::move(names));
        m_begun = m_lists.size() - 1;
    }
    void End() { m_done = m_begun.load(); }
    [[nodiscard]] std::size_t Done() const { return m_done; }
    [[nodiscard]] std::size_t Begun() const { return m_begun; }
    [[nodiscard]] bool Held(const std::wstring& names, std::size_t first, std::size_t last) const
    {
        const std::lock_guard lock(m_mutex);
        for (std::size_t i = first; i <= last; ++i) {
            if (m_lists[i] == names) {
                return true;
            }
        }
        return false;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::wstring> m_lists;
    std::atomic<std::size_t> m_begun = 0;
    std::atomic<std::size_t> m_done = 0;
};

[[noreturn]] void Fail(const char* what, const std::wstring& names)
{
    std::printf("seed %u: %s: %s\n", proof::Seed(), what, standin::ToUtf8(names).c_str());
    std::fflush(stdout);
    std::_Exit(1);
}

// The refresh thread's part.
class Changes
{
public:
    Changes(CQanhAppNameList& list, History& history, unsigned seed)
        : m_list(list), m_history(history), m_random(seed)
    {
        m_history.Begin({});
        m_history.End();
    }

    void Make()
    {
        switch (m_random() % 8) {
        case 0:
            ReadAgain();
            break;
        case 1:
            MarkPackages();
            break;
        case 2:
            MarkDesktopApps();
            break;
        case 3:
            AddDesktopApp(Pick(kDesktopApps));
            break;
        default:
            ChangePackage(Pick(kPackages));
        }
        ++made;
    }

    long long made = 0;

private:
    int Pick(int count) { return static_cast<int>(m_random() % static_cast<unsigned>(count)); }

    template <typename Change> void Make(Change change)
    {
        m_history.Begin(m_model.ExcludeNames());
        change();
        m_history.End();
    }

    void ChangePackage(int number)
    {
        auto known = std::find_if(m_model.packages.begin(), m_model.packages.end(),
                                  [&](const Model::Package& package) { return package.number == number; });
        if (known == m_model.packages.end()) {
            known = m_model.packages.insert(known, {number, 0, true});
        }
        known->version = ++m_version;
        std::string manifest = "<Package><Applications>";
        for (int app = 0; app < Model::Apps(*known); ++app) {
            const std::string name = standin::ToUtf8(Model::DisplayName(*known, app));
            manifest += "<Application><VisualElements DisplayName=\"" + name +
                        "\"><DefaultTile ShortName=\"S " + name + "\"/></VisualElements></Application>";
        }
        native::SetFile(L"folder\\AppxManifest.xml", manifest + "</Applications></Package>");
        const auto version = static_cast<UINT16>(m_version);
        auto* const package =
            new native::SystemPackage({L"family " + Number(number), {version, 0, 0, 0}, L"folder"});
        Make([&] {
            if (FAILED(m_list.AddMetroPackage(package))) {
                Fail("a package cannot be added", {});
            }
        });
        package->Release();
    }

    void AddDesktopApp(int number)
    {
        const auto is = [&](const Model::DesktopApp& app) { return app.number == number; };
        const std::wstring path = L"C:\\" + Number(number) + L".LNK";
        if (std::any_of(m_model.desktopApps.begin(), m_model.desktopApps.end(), is)) {
            return;
        }
        m_model.desktopApps.push_back({number, true});
        Make([&] {
            if (m_list.AddDesktopApp(Model::DisplayName(m_model.desktopApps.back()).c_str(), path.c_str()) !=
                S_OK) {
                Fail("an application cannot be added", path);
            }
        });
    }

    void MarkPackages()
    {
        std::vector<BOOL> states;
        for (Model::Package& package : m_model.packages) {
            package.isInstalled = m_random() % 4 != 0;
            states.push_back(package.isInstalled);
        }
        Make([&] { m_list.SetPackagesInstalled(states); });
    }

    void MarkDesktopApps()
    {
        std::vector<BOOL> states;
        for (Model::DesktopApp& app : m_model.desktopApps) {
            app.isInstalled = m_random() % 4 != 0;
            states.push_back(app.isInstalled);
        }
        Make([&] { m_list.SetDesktopAppsInstalled(states); });
    }

    // What is not installed is not in the file.
    void ReadAgain()
    {
        if (m_list.Save(kFile) != S_OK) {
            Fail("the catalogue cannot be saved", {});
        }
        std::erase_if(m_model.packages, [](const Model::Package& package) { return !package.isInstalled; });
        std::erase_if(m_model.desktopApps, [](const Model::DesktopApp& app) { return !app.isInstalled; });
        Make([&] {
            if (m_list.Reload(kFile) != S_FALSE) {
                Fail("the catalogue cannot be read", {});
            }
        });
    }

    CQanhAppNameList& m_list;
    History& m_history;
    std::mt19937 m_random;
    Model m_model;
    int m_version = 0;
};

std::wstring AskForNames(const CQanhAppNameList& list)
{
    ExcludeList excluded;
    BOOL found = FALSE;
    if (list.GetExcludeAppNameList(L"App", &excluded, &found) != S_OK || found) {
        Fail("no exclude list", {});
    }
    std::wstring names;
    for (const WideString& name : excluded) {
        names += std::wstring(name.View()) + L";";
    }
    return names;
}

// Two launching threads beside the changing one, until they have asked so often, and half as many changes
// were made.
void Run(const char* what, long long lists, unsigned seed)
{
    CQanhAppNameList list;
    History history;
    Changes changes(list, history, seed);
    for (int i = 0; i < 100; ++i) {
        changes.Make();
    }
    changes.made = 0;
    std::atomic<long long> asked = 0;
    std::atomic<long long> beside = 0;
    std::atomic<bool> isOver = false;
    const auto launch = [&] {
        while (!isOver) {
            const std::size_t first = history.Done();
            const std::wstring names = AskForNames(list);
            const std::size_t last = history.Begun();
            if (!history.Held(names, first, last)) {
                Fail("a list that never held", names);
            }
            ++asked;
            beside += first != last;
            // A host's questions beside the launches.
            (void)list.IsInDesktopAppList(L"c:\\3.lnk");
            (void)list.PackageFamilyNames();
            (void)list.DesktopShortcuts();
        }
    };
    std::thread launches[] = {std::thread(launch), std::thread(launch)};
    while (asked < lists || changes.made < lists / 2) {
        changes.Make();
        if (changes.made % 64 == 0) {
            proof::Progress(std::min<long long>(asked, lists), lists);
            (void)native::TakeLog();
        }
    }
    isOver = true;
    for (std::thread& thread : launches) {
        thread.join();
    }
    proof::Figure((std::string("exclude lists asked for ") + what).c_str(), static_cast<double>(asked),
                  "lists");
    proof::Figure((std::string("changes of records beside them ") + what).c_str(),
                  static_cast<double>(changes.made), "changes");
    proof::Figure((std::string("of the lists, asked for while a record changed ") + what).c_str(),
                  static_cast<double>(beside), "lists");
}

} // namespace

int main()
{
    Run("without the trace", proof::Count(1000LL, 100000LL), proof::Seed());
    DiagnosticLog::SetEnabled(true);
    Run("with the trace", proof::Count(200LL, 10000LL), proof::Seed() + 1);
    proof::Figure("lists that never held, and reports", 0);
}
