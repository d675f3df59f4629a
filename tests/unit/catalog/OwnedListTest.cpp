#include "catalog/OwnedList.h"

#include "unit/catalog/Records.h"

#include <stdexcept>
#include <type_traits>

namespace {

using namespace test;

using List = OwnedList<CQanhApp>;

class OwnedListTest : public Test
{
protected:
    std::unique_ptr<CQanhApp> Probe(const wchar_t* name)
    {
        return std::make_unique<RecordProbe>(name, &m_events);
    }
    void Append(List& list, const std::vector<const wchar_t*>& names)
    {
        for (const wchar_t* name : names) {
            list.Append(Probe(name));
        }
    }

    RecordProbe::Events m_events;
};

TEST_F(OwnedListTest, KeepsTheOrderOfAppending)
{
    List list;
    EXPECT_EQ(list.Size(), 0u);
    Append(list, {L"b", L"a", L"c"});
    EXPECT_EQ(list.Size(), 3u);
    EXPECT_THAT(DisplayNames(list), ElementsAre(L"b", L"a", L"c"));
    EXPECT_THAT(m_events, IsEmpty());
}

TEST_F(OwnedListTest, ClearingDeletesFrontToBack)
{
    List list(3);
    Append(list, {L"b", L"a", L"c"});
    list.Clear();
    EXPECT_THAT(m_events, ElementsAre(L"deleted b", L"deleted a", L"deleted c"));
    EXPECT_EQ(list.Size(), 0u);
    list.Clear();
    EXPECT_EQ(m_events.size(), 3u);
    // It can be filled again.
    Append(list, {L"d", L"e", L"f"});
    EXPECT_THAT(DisplayNames(list), ElementsAre(L"d", L"e", L"f"));
}

TEST_F(OwnedListTest, DeletesItsElementsAtTheEndOfItsLife)
{
    {
        List list;
        Append(list, {L"b", L"a"});
    }
    EXPECT_THAT(m_events, ElementsAre(L"deleted b", L"deleted a"));
}

TEST_F(OwnedListTest, RefusesWhatGoesBeyondItsLimitAndStaysAsItWas)
{
    List list(2);
    EXPECT_EQ(list.SizeLimit(), 2u);
    Append(list, {L"a", L"b"});
    try {
        list.Append(Probe(L"c"));
        FAIL() << "the list took a third element";
    } catch (const std::length_error& error) {
        EXPECT_STREQ(error.what(), "list too long");
    }
    EXPECT_THAT(DisplayNames(list), ElementsAre(L"a", L"b"));
    EXPECT_THAT(m_events, ElementsAre(L"deleted c"));
}

TEST_F(OwnedListTest, TakesNothingWithALimitOfNone)
{
    List list(0);
    EXPECT_THROW(list.Append(Probe(L"a")), std::length_error);
    EXPECT_EQ(list.Size(), 0u);
}

TEST_F(OwnedListTest, HasTheStandardListsLimitUnlessToldOtherwise)
{
    EXPECT_EQ(List().SizeLimit(), 768614336404564650u);
}

TEST_F(OwnedListTest, StaysAsItWasWhenMemoryRunsOut)
{
    List list;
    list.Append(Probe(L"a"));
    m_events.reserve(10);
    auto element = Probe(L"b");
    EXPECT_EQ(TryRaisingWithFailingAllocation(0, [&] { list.Append(std::move(element)); }).result,
              E_OUTOFMEMORY);
    EXPECT_THAT(DisplayNames(list), ElementsAre(L"a"));
    element.reset();
    EXPECT_THAT(m_events, ElementsAre(L"deleted b"));
}

TEST_F(OwnedListTest, ElementsAreAsConstantAsTheirList)
{
    static_assert(std::is_same_v<decltype(*std::declval<List&>().begin()->get()), CQanhApp&>);
    static_assert(std::is_same_v<decltype(**std::declval<List&>().begin()), CQanhApp&>);
    static_assert(std::is_same_v<decltype(*std::declval<const List&>().begin()->get()), const CQanhApp&>);
    static_assert(std::is_same_v<decltype(**std::declval<const List&>().begin()), const CQanhApp&>);
    List list;
    list.Append(Probe(L"a"));
    for (auto& element : list) {
        element->DisplayName = L"b";
    }
    EXPECT_THAT(DisplayNames(list), ElementsAre(L"b"));
}

TEST_F(OwnedListTest, SwappingTradesTheElements)
{
    List left;
    List right;
    Append(left, {L"a"});
    Append(right, {L"b", L"c"});
    left.Swap(right);
    EXPECT_THAT(DisplayNames(left), ElementsAre(L"b", L"c"));
    EXPECT_THAT(DisplayNames(right), ElementsAre(L"a"));
    EXPECT_THAT(m_events, IsEmpty());
}

} // namespace
