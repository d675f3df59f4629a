// The refresh thread passes without a pause over a Start menu and a store that change all the time, while the
// host's thread asks for queries: each of them is one that held before or after a change of a record, and no
// record is ever seen half changed.
#include "proof/Hosts.h"
#include "system/Passes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <regex>
#include <set>
#include <thread>

namespace {

constexpr int packageCount = 4;
constexpr int removedPackage = 3; // comes and goes; the others are always there
constexpr int applicationsOfOne = 3;
constexpr int shortcutCount = 8;                            // of each kind
constexpr char steadyFamily[] = "Vel.Steady_0standin00000"; // never changes
constexpr char steadyName[] = "mail of steady";
constexpr char steadyShortName[] = "mail steady";

std::string PackageName(int package)
{
    return "Vel.P" + std::to_string(package);
}

// The names of one version, in their order; no other version has any of them.
std::vector<std::string> NamesOf(int package, int version)
{
    std::vector<std::string> names;
    for (int application = 0; application < applicationsOfOne; ++application) {
        for (const char* kind : {"long", "short"}) {
            names.push_back("mail p" + std::to_string(package) + " v" + std::to_string(version) + " a" +
                            std::to_string(application) + " " + kind);
        }
    }
    return names;
}

std::string ManifestOf(const std::string& name, int version, const std::vector<std::string>& names)
{
    std::string xml = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                      "<Package xmlns=\"http://schemas.microsoft.com/appx/2010/manifest\"><Identity Name=\"" +
                      name + "\" Publisher=\"CN=Test\" Version=\"1." + std::to_string(version) +
                      ".0.0\"/><Applications>";
    for (std::size_t index = 0; index < names.size(); index += 2) {
        xml += "<Application Id=\"A" + std::to_string(index) +
               "\" Executable=\"a.exe\"><VisualElements DisplayName=\"" + names[index] +
               "\"><DefaultTile ShortName=\"" + names[index + 1] + "\"/></VisualElements></Application>\n";
    }
    return xml + "</Applications></Package>\n";
}

// Package and version of a name of NamesOf; no package: -1.
struct Origin
{
    int package = -1;
    int version = -1;
};

Origin OriginOf(const std::string& name)
{
    static const std::regex s_form("mail p([0-9]+) v([0-9]+).*");
    std::smatch parts;
    if (!std::regex_match(name, parts, s_form)) {
        return {};
    }
    return {std::stoi(parts[1]), std::stoi(parts[2])};
}

class Concurrency : public testing::Test
{
protected:
    Concurrency()
    {
        m_sandbox.Settings().DeleteValue(L"DebugLog");
        m_sandbox.Settings().SetDword(L"RefreshInterval", 0);
        for (int index = 0; index < shortcutCount; ++index) {
            m_sandbox.AddCommonShortcut(Steady(index));
            m_sandbox.AddUserShortcut(Fleeting(index));
        }
        for (int package = 0; package < packageCount; ++package) {
            Write(package);
        }
        m_sandbox.WritePackage(L"Vel.Steady", ManifestOf("Vel.Steady", 1, {steadyName, steadyShortName}), "");
    }

    static std::wstring Steady(int index) { return L"steady mail " + std::to_wstring(index) + L".lnk"; }
    static std::wstring Fleeting(int index) { return L"fleeting mail " + std::to_wstring(index) + L".lnk"; }

    void Write(int package)
    {
        const std::string name = PackageName(package);
        const int version = m_versions[package];
        m_sandbox.WritePackage(test::FromUtf8(name), ManifestOf(name, version, NamesOf(package, version)),
                               "");
        m_isRemoved = m_isRemoved && package != removedPackage;
    }

    // Stays when somebody reads it all the time. Where it goes it is deleted with the sandbox.
    void Remove()
    {
        const std::wstring from = m_sandbox.Packages() + L"\\" + test::FromUtf8(PackageName(removedPackage));
        const std::wstring to = m_sandbox.Folder() + L"\\removed " + std::to_wstring(m_removals++);
        m_isRemoved = test::WaitUntil([&] { return MoveFileW(from.c_str(), to.c_str()) != FALSE; }, 1000);
    }

    // One change of the Start menu or the store.
    void Change(proof::Random& random)
    {
        const int package = static_cast<int>(random.UpTo(packageCount - 1));
        switch (random.UpTo(3)) {
        case 0:
            ++m_versions[package];
            Write(package);
            break;
        case 1:
            if (m_isRemoved) {
                Write(removedPackage);
            } else {
                Remove();
            }
            break;
        case 2: {
            const std::wstring path =
                m_sandbox.UserPrograms() + L"\\" + Fleeting(static_cast<int>(random.UpTo(shortcutCount - 1)));
            if (!DeleteFileW(path.c_str())) {
                test::MakeFile(path);
            }
            break;
        }
        default:
            if (m_newShortcuts < 100) {
                m_sandbox.AddCommonShortcut(L"new mail " + std::to_wstring(1000 + m_newShortcuts++) +
                                            L".lnk");
            }
        }
    }

    // Everything is there again. A package that went while it was read for the first time is known without
    // names, and read anew when its version is another one.
    void ChangeBack()
    {
        ++m_versions[removedPackage];
        for (int index = 0; index < shortcutCount; ++index) {
            m_sandbox.AddUserShortcut(Fleeting(index));
        }
        for (int package = 0; package < packageCount; ++package) {
            Write(package);
        }
    }

    test::Sandbox m_sandbox;
    int m_versions[packageCount] = {};
    bool m_isRemoved = false;
    int m_removals = 0;
    int m_newShortcuts = 0;
};

// Looks at one query after the other.
class Oracle
{
public:
    // The last query of all, when everything is there, tells the catalogue's order: records are only ever
    // appended.
    explicit Oracle(const std::vector<std::string>& last)
    {
        for (const std::string& name : last) {
            m_order.emplace(RecordOf(name), m_order.size());
        }
    }

    void Look(const std::vector<std::string>& names)
    {
        std::map<int, std::vector<std::string>> packages;
        std::set<std::string> shortcuts;
        std::size_t last = 0;
        for (const std::string& name : names) {
            const auto place = m_order.find(RecordOf(name));
            ASSERT_NE(place, m_order.end()) << "a record that is gone at the end: " << name;
            ASSERT_GE(place->second, last) << "not in the catalogue's order: " << name;
            last = place->second;
            if (const Origin origin = OriginOf(name); origin.package >= 0) {
                packages[origin.package].push_back(name);
            } else {
                ASSERT_TRUE(shortcuts.insert(name).second) << "twice: " << name;
            }
        }
        LookAtPackages(packages);
        LookAtShortcuts(shortcuts);
    }

    // How often a package went.
    [[nodiscard]] int Disappearances(int package) const { return m_disappearances[package]; }

private:
    static std::string RecordOf(const std::string& name)
    {
        const Origin origin = OriginOf(name);
        return origin.package < 0 ? name : PackageName(origin.package);
    }

    void LookAtPackages(const std::map<int, std::vector<std::string>>& packages)
    {
        for (int package = 0; package < packageCount; ++package) {
            const auto names = packages.find(package);
            const bool isMissing = names == packages.end();
            m_disappearances[package] += isMissing && !m_isMissing[package];
            m_isMissing[package] = isMissing;
            if (isMissing) {
                continue;
            }
            const int version = OriginOf(names->second.front()).version;
            ASSERT_EQ(names->second, NamesOf(package, version)) << "not the names of one version";
            ASSERT_GE(version, m_versions[package]) << "an older version than before";
            m_versions[package] = version;
        }
    }

    void LookAtShortcuts(const std::set<std::string>& shortcuts)
    {
        const auto count = [&](const std::string& kind) {
            return std::count_if(shortcuts.begin(), shortcuts.end(),
                                 [&](const std::string& name) { return name.starts_with(kind); });
        };
        ASSERT_EQ(count("steady "), shortcutCount);
        ASSERT_EQ(count(steadyName) + count(steadyShortName), 2);
        const auto newShortcuts = count("new ");
        ASSERT_GE(newShortcuts, m_newShortcuts) << "a shortcut was there before and is still";
        m_newShortcuts = newShortcuts;
    }

    std::map<std::string, std::size_t> m_order;
    int m_disappearances[packageCount] = {};
    bool m_isMissing[packageCount] = {};
    int m_versions[packageCount] = {};
    std::ptrdiff_t m_newShortcuts = 0;
};

TEST_F(Concurrency, EachQueryHoldsBeforeOrAfterAChange)
{
    const int count = proof::Count(300, 10000);
    const std::wstring file = m_sandbox.Folder() + L"\\queries.txt";
    test::HostProcess host(m_sandbox);
    host.Do("own-desktop");
    host.Do("quick-disk");
    ASSERT_EQ(host.Command("init"), proof::ok);
    test::WaitForFirstPass();

    std::atomic<bool> isOver = false;
    long long changes = 0;
    std::string failure; // the last one
    std::thread changer([&] {
        proof::Random random;
        while (!isOver) {
            try {
                Change(random);
                ++changes;
            } catch (const std::exception& error) {
                failure = error.what(); // readers did not let it happen
            }
            Sleep(random.UpTo(10));
        }
    });
    std::vector<std::string> lines;
    constexpr int portion = 50;
    std::string trouble;
    for (int done = 0; done < count && trouble.empty(); done += portion) {
        try {
            host.Do("queries\t" + std::to_string(portion) + "\tmail\t" + test::ToUtf8(file) + "\t" +
                        steadyFamily,
                    300000);
            const std::vector<std::string> more = test::Split(test::ReadFileBytes(file), "\n");
            lines.insert(lines.end(), more.begin(), more.end() - 1);
        } catch (const std::exception& error) {
            trouble = error.what();
        }
        proof::Progress(done + portion, count);
    }
    isOver = true;
    changer.join();
    ASSERT_EQ(trouble, "");
    ASSERT_GT(changes, count / 10) << failure;
    ChangeBack();

    // Until a pass has found everything again.
    std::vector<std::string> last;
    const std::size_t all = packageCount * applicationsOfOne * 2 + 2 + 2 * shortcutCount +
                            static_cast<std::size_t>(m_newShortcuts);
    ASSERT_TRUE(test::WaitUntil(
        [&] {
            last = proof::NamesIn(host.Command("query\tmail"));
            bool isCurrent = last.size() == all;
            for (const std::string& name : last) {
                const Origin origin = OriginOf(name);
                isCurrent = isCurrent && (origin.package < 0 || origin.version == m_versions[origin.package]);
            }
            return isCurrent;
        },
        60000))
        << last.size() << " of " << all << " names, seed " << proof::Seed();

    Oracle oracle(last);
    std::set<std::string> different;
    for (std::size_t index = 0; index < lines.size() && !HasFatalFailure(); ++index) {
        SCOPED_TRACE("query " + std::to_string(index) + ", seed " + std::to_string(proof::Seed()));
        const std::vector<std::string> fields = test::Split(lines[index], "\t");
        different.insert(fields[0]);
        oracle.Look(proof::NamesIn(fields[0]));
        if (fields.size() > 1) {
            ASSERT_EQ(lines[index], fields[0] + "\t0x00000000 1\t0x00000000 " + steadyName);
        }
    }
    EXPECT_EQ(lines.size(), static_cast<std::size_t>(count));
    int disappearances = 0;
    for (int package = 0; package < packageCount; ++package) {
        if (package != removedPackage) {
            // The store may say so while it changes, which it did so many times.
            EXPECT_LE(oracle.Disappearances(package), m_versions[package]) << package;
            disappearances += oracle.Disappearances(package);
        }
    }
    EXPECT_GT(different.size(), lines.size() / 100) << "nothing was refreshed meanwhile";
    proof::Figure("queries asked during passes", static_cast<double>(lines.size()));
    proof::Figure("different queries among them", static_cast<double>(different.size()));
    proof::Figure("changes of the Start menu and the store meanwhile", static_cast<double>(changes));
    proof::Figure("times that a package went which was being changed", disappearances);
    host.Do("finalize", 45000);
    EXPECT_EQ(host.Exit(), 0u);
}

} // namespace
