#include "catalog/ExcludeList.h"

#include "unit/catalog/Records.h"

namespace {

using namespace test;

// Adds the names; each is taken or is there already.
void AddAll(ExcludeList& list, const std::vector<const wchar_t*>& names, HRESULT result = S_OK)
{
    for (const wchar_t* name : names) {
        EXPECT_EQ(list.AddUnique(name), result) << PrintToString(name);
    }
}

TEST(ExcludeList, KeepsNamesInTheOrderOfTheirFirstAdding)
{
    ExcludeList list;
    AddAll(list, {L"Mail", L"Calendar", L"Alarms"});
    AddAll(list, {L"Calendar"}, S_FALSE);
    EXPECT_FALSE(list.IsEmpty());
    EXPECT_THAT(Names(list), ElementsAre(L"Mail", L"Calendar", L"Alarms"));
}

TEST(ExcludeList, TakesANameOnceWhateverTheCaseOfItsAsciiLetters)
{
    ExcludeList list;
    AddAll(list, {L"Alarms", L"Mail", L"\u00C4rger", L"\u00E4rger", L"メール", L""});
    AddAll(list, {L"MAIL", L"alarmS", L"\u00C4RGER", L"メール", L""}, S_FALSE);
    EXPECT_THAT(Names(list), ElementsAre(L"Alarms", L"Mail", L"\u00C4rger", L"\u00E4rger", L"メール", L""));
}

TEST(ExcludeList, ComparesWholeNames)
{
    ExcludeList list;
    AddAll(list, {L"Mail", L"Mai", L"Mails", L"Mail "});
    EXPECT_THAT(Names(list), ElementsAre(L"Mail", L"Mai", L"Mails", L"Mail "));
}

TEST(ExcludeList, KeepsACopy)
{
    ExcludeList list;
    std::wstring name = L"Mail";
    ASSERT_EQ(list.AddUnique(name.c_str()), S_OK);
    name = L"gone";
    EXPECT_THAT(Names(list), ElementsAre(L"Mail"));
}

TEST(ExcludeList, StaysAsItWasWhenMemoryRunsOut)
{
    const std::size_t failures = ForEachFailingAllocation([](std::size_t index) {
        ExcludeList list;
        EXPECT_EQ(list.AddUnique(L"Mail"), S_OK);
        const Attempt attempt = TryWithFailingAllocation(
            index, [&] { return list.AddUnique(L"A name that is too long for a string's own buffer"); });
        EXPECT_EQ(attempt.result, attempt.failed ? E_OUTOFMEMORY : S_OK);
        if (attempt.failed) {
            EXPECT_THAT(Names(list), ElementsAre(L"Mail"));
            EXPECT_EQ(attempt.left, 0u);
            EXPECT_EQ(list.AddUnique(L"Calendar"), S_OK);
        }
        return attempt.failed;
    });
    EXPECT_GE(failures, 2u);
}

TEST(ExcludeList, NeedsNoMemoryForANameThatIsThere)
{
    ExcludeList list;
    EXPECT_EQ(list.AddUnique(L"Mail"), S_OK);
    EXPECT_EQ(TryWithFailingAllocation(0, [&] { return list.AddUnique(L"MAIL"); }).result, S_FALSE);
}

} // namespace
