// Readers that give no answer about the node at hand.

#include "common/Xml.h"

#include "support/ReaderProbe.h"
#include "support/XmlText.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;

class XmlFailures : public ::testing::Test
{
protected:
    std::vector<std::wstring> Attributes()
    {
        std::vector<std::wstring> names;
        m_result = Xml::ForEachAttribute(&m_probe, [&](std::wstring_view name, Xml::Value) {
            names.emplace_back(name);
            return false;
        });
        return names;
    }
    int Elements()
    {
        int count = 0;
        m_result = Xml::ForEachElementBelow(&m_probe, Xml::ElementPlaceOf(&m_probe), L"x", [&] { ++count; });
        return count;
    }

    const test::XmlSource m_source{"<r a='1' b='2' c='3'><x/><x/></r>", L"r"};
    test::ReaderProbe m_probe{m_source.Reader()};
    HRESULT m_result = E_UNEXPECTED;
};

TEST_F(XmlFailures, AttributeWithoutAValueIsPassedOver)
{
    m_probe.Answer("GetValue", 1, E_FAIL);
    EXPECT_THAT(Attributes(), ElementsAre(L"a", L"c"));
    EXPECT_EQ(m_result, S_FALSE);
}

TEST_F(XmlFailures, AttributeWithoutANameIsPassedOver)
{
    m_probe.Answer("GetLocalName", 0, E_FAIL);
    EXPECT_THAT(Attributes(), ElementsAre(L"b", L"c"));
    EXPECT_EQ(m_result, S_FALSE);
}

TEST_F(XmlFailures, NodeOfNoTypeIsNoElement)
{
    EXPECT_TRUE(Xml::PlaceOf(&m_probe).IsElement());
    m_probe.Answer("GetNodeType", 1, E_FAIL);
    EXPECT_FALSE(Xml::PlaceOf(&m_probe).IsElement());
}

TEST_F(XmlFailures, WalkCannotBeginWhereTheDepthIsUnknown)
{
    m_probe.Answer("GetDepth", 0, E_FAIL);
    EXPECT_EQ(Elements(), 0);
    EXPECT_EQ(m_result, E_FAIL);
    EXPECT_EQ(m_probe.Calls("Read"), 0);
}

TEST_F(XmlFailures, ElementOfUnknownDepthIsPassedOver)
{
    m_probe.Answer("GetDepth", 1, E_FAIL);
    EXPECT_EQ(Elements(), 1);
    EXPECT_EQ(m_result, S_OK);
}

TEST_F(XmlFailures, NodeOfUnknownTypeIsPassedOver)
{
    // The walk asks once for the type of each node: the root's is the first, then come the two elements'
    // and the end tag's.
    m_probe.Answer("GetNodeType", 2, E_FAIL);
    EXPECT_EQ(Elements(), 1);
    EXPECT_EQ(m_result, S_OK);
    EXPECT_EQ(m_probe.Calls("GetNodeType"), 4);
}

} // namespace
