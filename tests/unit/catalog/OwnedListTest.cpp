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

} // namespace
