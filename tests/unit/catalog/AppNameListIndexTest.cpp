// The catalogue answers by an index while nothing is logged, and record by record while it is: both must give
// the same answers after anything that changes the records.

#include "catalog/AppNameList.h"
#include "common/DiagnosticLog.h"
#include "unit/catalog/Records.h"

#include <algorithm>
#include <cwchar>
#include <random>

namespace {

using namespace test;

class AppNameListIndex : public testing::Test
{
protected:
    std::wstring AnyShortcut()
    {
        return Any({L"C:\\a.lnk", L"c:\\A.LNK", L"C:\\B.url", L"C:\\メ.lnk", L"é", L"É", L"I", L"\u00DD",
                    L"\u00FD"});
    }
    std::wstring AnyFamily() { return Any({L"a_1", L"A_1", L"b_1", L"", L"c_1"}); }
    std::size_t Below(std::size_t end) { return m_random() % end; }

    // A catalogue file with records of both kinds, some of them twice.
    std::wstring AnyFile()
    {
        CQanhAppNameList list;
        for (std::size_t count = Below(4); count > 0; --count) {
            (void)list.AddMetroPackage(Package(AnyFamily()));
            (void)list.AddDesktopApp(L"name", AnyShortcut().c_str());
        }
        std::wstring file = m_folder / L"list.xml";
        EXPECT_EQ(list.Save(file.c_str()), S_OK);
        return file;
    }

    void ChangeSomething(CQanhAppNameList& list)
    {
        switch (Below(6)) {
        case 0:
            (void)list.AddMetroPackage(Package(AnyFamily()));
            break;
        case 1:
            (void)list.Load(AnyFile().c_str());
            break;
        case 2:
            (void)list.Reload(AnyFile().c_str());
            break;
        case 3:
            if (Below(4) == 0) {
                list.Clear();
            }
            break;
        default:
            (void)list.AddDesktopApp(L"name", AnyShortcut().c_str());
            break;
        }
    }

    // How the list answers all questions, by the index or by the records.
    struct Answers
    {
        std::vector<BOOL> hasShortcut;
        std::vector<const CQanhPackage*> packages;
        friend bool operator==(const Answers&, const Answers&) = default;
    };
    Answers Ask(const CQanhAppNameList& list, bool logs)
    {
        DiagnosticLog::SetEnabled(logs);
        Answers answers;
        for (const wchar_t* path : {L"C:\\a.lnk", L"C:\\A.lnk", L"c:\\b.URL", L"C:\\メ.LNK", L"é", L"É", L"i",
                                    L"\u00DD", L"\u00FD", L"C:\\", L""}) {
            answers.hasShortcut.push_back(list.IsInDesktopAppList(path));
        }
        for (const wchar_t* name : {L"a_1", L"A_1", L"b_1", L"B_1", L"", L"c_1"}) {
            answers.packages.push_back(list.GetPackage(name));
        }
        DiagnosticLog::SetEnabled(false);
        return answers;
    }

    // Both ways give the same answers. Returns how many shortcuts they know.
    std::size_t ExpectSameAnswers(const CQanhAppNameList& list)
    {
        const Answers answers = Ask(list, false);
        EXPECT_EQ(answers, Ask(list, true));
        return static_cast<std::size_t>(
            std::count(answers.hasShortcut.begin(), answers.hasShortcut.end(), TRUE));
    }

    TemporaryFolder m_folder;

private:
    std::wstring Any(std::vector<std::wstring> texts) { return texts[Below(texts.size())]; }

    LogCapture m_log; // where the lines go
    std::mt19937 m_random{1};
};

TEST_F(AppNameListIndex, AnswersAsTheRecordsDoAfterAnyChange)
{
    std::size_t known = 0;
    for (int round = 0; round < 20; ++round) {
        CQanhAppNameList list;
        for (int change = 0; change < 15; ++change) {
            DiagnosticLog::SetEnabled(Below(2) != 0);
            ChangeSomething(list);
            known += ExpectSameAnswers(list);
            ASSERT_FALSE(HasFailure()) << "round " << round << ", change " << change;
        }
    }
    EXPECT_GT(known, 100u);
}

// Nobody asks between the changes: records of a file still wait for their place in the index when the next
// ones come.
TEST_F(AppNameListIndex, AnswersAsTheRecordsDoAfterSeveralChanges)
{
    std::size_t known = 0;
    for (int round = 0; round < 60; ++round) {
        CQanhAppNameList list;
        for (std::size_t changes = 2 + Below(4); changes > 0; --changes) {
            DiagnosticLog::SetEnabled(Below(2) != 0);
            ChangeSomething(list);
        }
        known += ExpectSameAnswers(list);
        ASSERT_FALSE(HasFailure()) << "round " << round;
    }
    EXPECT_GT(known, 30u);
}

TEST_F(AppNameListIndex, KnowsThePackageOfAFileBeforeALaterOneOfItsName)
{
    CQanhAppNameList list;
    DiagnosticLog::SetEnabled(false);
    const std::wstring file = m_folder / L"packages.xml";
    WriteFileBytes(file, "<r><Package PackageFamilyName='a_1'/><Package PackageFamilyName='b_1'/></r>");
    ASSERT_EQ(list.Load(file.c_str()), S_FALSE);
    auto later = Package(L"a_1");
    const CQanhPackage* pLater = later.get();
    ASSERT_EQ(list.AddMetroPackage(std::move(later)), S_OK);
    const CQanhPackage* found = list.GetPackage(L"a_1");
    EXPECT_NE(found, nullptr);
    EXPECT_NE(found, pLater);
    EXPECT_NE(list.GetPackage(L"b_1"), nullptr);
}

TEST_F(AppNameListIndex, AnswersWhenThereIsNoMemoryForTheIndexOfAFile)
{
    DiagnosticLog::SetEnabled(false);
    const std::wstring file = m_folder / L"records.xml";
    WriteFileBytes(file, "<r><Package PackageFamilyName='a_1'/><DesktopApps>"
                         "<DesktopApp LnkFileName='C:\\a.lnk'/></DesktopApps></r>");
    for (const bool isPackageFirst : {true, false}) {
        const std::size_t failures = ForEachFailingAllocation([&](std::size_t index) {
            CQanhAppNameList list;
            EXPECT_EQ(list.Load(file.c_str()), S_FALSE);
            BOOL hasShortcut = FALSE;
            const CQanhPackage* package = nullptr;
            const Attempt attempt = TryWithFailingAllocation(index, [&] {
                package = isPackageFirst ? list.GetPackage(L"a_1") : nullptr;
                hasShortcut = list.IsInDesktopAppList(L"c:\\A.LNK");
                package = isPackageFirst ? package : list.GetPackage(L"a_1");
                return S_OK;
            });
            EXPECT_EQ(hasShortcut, TRUE);
            EXPECT_NE(package, nullptr);
            // When there is memory again, the index answers.
            EXPECT_EQ(list.AddDesktopApp(L"name", L"C:\\b.lnk"), S_OK);
            ExpectSameAnswers(list);
            EXPECT_EQ(list.IsInDesktopAppList(L"C:\\a.lnk"), TRUE);
            EXPECT_EQ(list.IsInDesktopAppList(L"C:\\B.lnk"), TRUE);
            return attempt.failed;
        });
        EXPECT_GE(failures, 2u);
    }
}

TEST_F(AppNameListIndex, KnowsNothingOfARecordThatFoundNoMemory)
{
    DiagnosticLog::SetEnabled(false);
    // With some numbers of records the index has to grow.
    std::size_t mostFailures = 0;
    for (std::size_t records = 0; records < 20; ++records) {
        const std::size_t failures = ForEachFailingAllocation([&](std::size_t index) {
            CQanhAppNameList list;
            for (std::size_t i = 0; i < records; ++i) {
                EXPECT_EQ(list.AddDesktopApp(L"name", (L"C:\\" + std::to_wstring(i)).c_str()), S_OK);
            }
            const Attempt attempt =
                TryWithFailingAllocation(index, [&] { return list.AddDesktopApp(L"name", L"C:\\a.lnk"); });
            EXPECT_EQ(attempt.result, attempt.failed ? E_OUTOFMEMORY : S_OK);
            EXPECT_EQ(list.IsInDesktopAppList(L"C:\\a.lnk"), attempt.failed ? FALSE : TRUE);
            EXPECT_EQ(list.DesktopShortcuts().size(), attempt.failed ? records : records + 1);
            if (attempt.failed) {
                EXPECT_EQ(attempt.left, 0u);
                EXPECT_EQ(list.AddDesktopApp(L"name", L"C:\\a.lnk"), S_OK);
            }
            return attempt.failed;
        });
        mostFailures = std::max(mostFailures, failures);
    }
    // The record, its two texts, its place in the list, and the index.
    EXPECT_EQ(mostFailures, 5u);
}

TEST_F(AppNameListIndex, KnowsNothingOfAPackageThatFoundNoMemory)
{
    DiagnosticLog::SetEnabled(false);
    const std::size_t failures = ForEachFailingAllocation([&](std::size_t index) {
        bool isDeleted = false;
        auto package = std::make_unique<PackageProbe>(L"a_1", [&] { isDeleted = true; });
        CQanhAppNameList list;
        const Attempt attempt =
            TryWithFailingAllocation(index, [&] { return list.AddMetroPackage(std::move(package)); });
        EXPECT_EQ(attempt.result, attempt.failed ? E_OUTOFMEMORY : S_OK);
        EXPECT_EQ(list.GetPackage(L"a_1") == nullptr, attempt.failed);
        EXPECT_EQ(list.PackageFamilyNames().size(), attempt.failed ? 0u : 1u);
        EXPECT_EQ(isDeleted, attempt.failed);
        EXPECT_EQ(list.AddMetroPackage(Package(L"b_1")), S_OK);
        return attempt.failed;
    });
    EXPECT_GE(failures, 2u);
}

TEST(ExcludeListSet, ListsTheNamesThatAWalkThroughThemDoesNotFind)
{
    std::mt19937 random(1);
    const std::wstring letters = L"aAbBiIéÉ\u00DD\u00FDメ";
    ExcludeList list;
    std::vector<std::wstring> expected;
    for (int i = 0; i < 2000; ++i) {
        std::wstring name(1 + random() % 3, L' ');
        for (wchar_t& letter : name) {
            letter = letters[random() % letters.size()];
        }
        const bool isListed = std::any_of(expected.begin(), expected.end(), [&](const std::wstring& entry) {
            return _wcsicmp(entry.c_str(), name.c_str()) == 0;
        });
        ASSERT_EQ(list.AddUnique(name.c_str()), isListed ? S_FALSE : S_OK) << ToUtf8(name);
        if (!isListed) {
            expected.push_back(name);
        }
    }
    EXPECT_EQ(Names(list), expected);
}

} // namespace
