#include "catalog/OwnedList.h"

#include "support/Allocations.h"
#include "unit/catalog/Records.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using test::RecordProbe;
using testing::ElementsAre;
using testing::IsEmpty;

class OwnedListTest : public testing::Test
{
protected:
    std::unique_ptr<CQanhApp> Probe(const wchar_t* name)
    {
        return std::make_unique<RecordProbe>(name, &m_events);
    }

    static std::vector<std::wstring> Elements(const OwnedList<CQanhApp>& list)
    {
        std::vector<std::wstring> names;
        for (const auto& element : list) {
            names.emplace_back(element->DisplayName.c_str());
        }
        return names;
    }

    RecordProbe::Events m_events;
};

TEST_F(OwnedListTest, KeepsTheOrderOfAppending)
{
    OwnedList<CQanhApp> list;
    EXPECT_EQ(list.Size(), 0u);
    list.Append(Probe(L"b"));
    list.Append(Probe(L"a"));
    list.Append(Probe(L"c"));
    EXPECT_EQ(list.Size(), 3u);
    EXPECT_THAT(Elements(list), ElementsAre(L"b", L"a", L"c"));
    EXPECT_THAT(m_events, IsEmpty());
}

TEST_F(OwnedListTest, ClearingDeletesFrontToBack)
{
    OwnedList<CQanhApp> list;
    list.Append(Probe(L"b"));
    list.Append(Probe(L"a"));
    list.Append(Probe(L"c"));
    list.Clear();
    EXPECT_THAT(m_events, ElementsAre(L"deleted b", L"deleted a", L"deleted c"));
    EXPECT_EQ(list.Size(), 0u);
    list.Clear();
    EXPECT_EQ(m_events.size(), 3u);
}

TEST_F(OwnedListTest, CanBeFilledAgainAfterClearing)
{
    OwnedList<CQanhApp> list(1);
    list.Append(Probe(L"a"));
    list.Clear();
    list.Append(Probe(L"b"));
    EXPECT_THAT(Elements(list), ElementsAre(L"b"));
}

TEST_F(OwnedListTest, DeletesItsElementsAtTheEndOfItsLife)
{
    {
        OwnedList<CQanhApp> list;
        list.Append(Probe(L"b"));
        list.Append(Probe(L"a"));
    }
    EXPECT_THAT(m_events, ElementsAre(L"deleted b", L"deleted a"));
}

TEST_F(OwnedListTest, RefusesWhatGoesBeyondItsLimitAndStaysAsItWas)
{
    OwnedList<CQanhApp> list(2);
    EXPECT_EQ(list.SizeLimit(), 2u);
    list.Append(Probe(L"a"));
    list.Append(Probe(L"b"));
    try {
        list.Append(Probe(L"c"));
        FAIL() << "the list took a third element";
    } catch (const std::length_error& error) {
        EXPECT_STREQ(error.what(), "list too long");
    }
    EXPECT_THAT(Elements(list), ElementsAre(L"a", L"b"));
    EXPECT_THAT(m_events, ElementsAre(L"deleted c"));
}

TEST_F(OwnedListTest, TakesNothingWithALimitOfNone)
{
    OwnedList<CQanhApp> list(0);
    EXPECT_THROW(list.Append(Probe(L"a")), std::length_error);
    EXPECT_EQ(list.Size(), 0u);
}

TEST_F(OwnedListTest, HasTheStandardListsLimitUnlessToldOtherwise)
{
    EXPECT_EQ(OwnedList<CQanhApp>().SizeLimit(), 768614336404564650u);
}

TEST_F(OwnedListTest, StaysAsItWasWhenMemoryRunsOut)
{
    OwnedList<CQanhApp> list;
    list.Append(Probe(L"a"));
    m_events.reserve(10);
    auto element = Probe(L"b");
    bool thrown = false;
    {
        const test::AllocationWatch watch(0);
        try {
            list.Append(std::move(element));
        } catch (const std::bad_alloc&) {
            thrown = true;
        }
    }
    EXPECT_TRUE(thrown);
    EXPECT_THAT(Elements(list), ElementsAre(L"a"));
    element.reset();
    EXPECT_THAT(m_events, ElementsAre(L"deleted b"));
}

TEST_F(OwnedListTest, ElementsAreAsConstantAsTheirList)
{
    using List = OwnedList<CQanhApp>;
    static_assert(std::is_same_v<decltype(*std::declval<List&>().begin()->get()), CQanhApp&>);
    static_assert(std::is_same_v<decltype(**std::declval<List&>().begin()), CQanhApp&>);
    static_assert(std::is_same_v<decltype(*std::declval<const List&>().begin()->get()), const CQanhApp&>);
    static_assert(std::is_same_v<decltype(**std::declval<const List&>().begin()), const CQanhApp&>);
    List list;
    list.Append(Probe(L"a"));
    for (auto& element : list) {
        element->DisplayName = L"b";
    }
    EXPECT_THAT(Elements(list), ElementsAre(L"b"));
}

TEST_F(OwnedListTest, SwappingTradesTheElements)
{
    OwnedList<CQanhApp> left;
    OwnedList<CQanhApp> right;
    left.Append(Probe(L"a"));
    right.Append(Probe(L"b"));
    right.Append(Probe(L"c"));
    left.Swap(right);
    EXPECT_THAT(Elements(left), ElementsAre(L"b", L"c"));
    EXPECT_THAT(Elements(right), ElementsAre(L"a"));
    EXPECT_THAT(m_events, IsEmpty());
}

} // namespace
