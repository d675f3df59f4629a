// What the records of Store applications and of desktop applications have in common.

#include "catalog/DesktopApp.h"
#include "catalog/MetroApp.h"
#include "support/ReaderProbe.h"
#include "unit/catalog/Records.h"
#include "unit/catalog/WriterProbe.h"

namespace {

using namespace test;

// How records of a kind are made.
template <typename App> struct Kind;

template <> struct Kind<CQanhMetroApp>
{
    static constexpr char kClass[] = "CQanhMetroApp::";
    static constexpr wchar_t kElement[] = L"MetroApp";
    static constexpr char kEmptyXml[] = "<MetroApp/>";
    static constexpr char kXml[] =
        R"(<MetroApp DisplayName="a" ShortName="b" RubyDisplayName="c" RubyShortName="d"/>)";
    static constexpr std::size_t kParts = 6; // of an element: start, attributes, end
    static CQanhMetroApp WithEverything() { return CQanhMetroApp(L"a", L"b", L"c", L"d"); }
    static CQanhMetroApp Named(const wchar_t* name) { return CQanhMetroApp(name); }
};

template <> struct Kind<CQanhDesktopApp>
{
    static constexpr char kClass[] = "CQanhDesktopApp::";
    static constexpr wchar_t kElement[] = L"DesktopApp";
    static constexpr char kEmptyXml[] = "<DesktopApp/>";
    static constexpr char kXml[] =
        R"(<DesktopApp DisplayName="a" LnkFileName="b" LocalizeName="c" RubyDisplayName="d" )"
        R"(NeedReserve="1" IsInstalled="0" IsDualMode="1"/>)";
    static constexpr std::size_t kParts = 9;
    static CQanhDesktopApp WithEverything()
    {
        return CQanhDesktopApp(L"a", L"b", L"c", L"d", true, false, true);
    }
    static CQanhDesktopApp Named(const wchar_t* name) { return CQanhDesktopApp(name, L"C:\\a.lnk"); }
};

template <typename App> class BothApps : public Test
{
protected:
    // An operation of the class.
    static Lines Call(const char* entry, const char* result)
    {
        return test::Call(Kind<App>::kClass + std::string(entry), result);
    }
};

using Apps = Types<CQanhMetroApp, CQanhDesktopApp>;
TYPED_TEST_SUITE(BothApps, Apps, );

TYPED_TEST(BothApps, CheckTheArgumentsOfASearchAndTouchNothingThen)
{
    ExpectArgumentChecks(Kind<TypeParam>::Named(L"web mail"));
}

TYPED_TEST(BothApps, ClearFoundBeforeTheyMakeTheWantedNameReadyAndLogEveryEarlyExit)
{
    const TypeParam app = Kind<TypeParam>::Named(L"mail");
    const LogCapture log;
    EXPECT_EQ(app.AddToExcludeAppNameList(nullptr, nullptr, nullptr), E_POINTER);
    Ask(app, L"");
    Ask(app, L"mail");
    {
        const NoCopies noCopies;
        EXPECT_EQ(Ask(app, L"mail"), (SearchAnswer{E_OUTOFMEMORY, 0, {}}));
    }
    {
        const NoLowering noLowering;
        EXPECT_EQ(Ask(app, L"mail"), (SearchAnswer{E_FAIL, 0, {}}));
    }
    EXPECT_EQ(log.Lines(), this->Call("AddToExcludeAppNameList((null))", "(0x80004003)") +
                               this->Call("AddToExcludeAppNameList()", "(0x80070057)") +
                               this->Call("AddToExcludeAppNameList(mail)", "(0x00000000)") +
                               this->Call("AddToExcludeAppNameList(mail)", "(0x8007000E)") +
                               this->Call("AddToExcludeAppNameList(mail)", "(0x80004005)"));
}

TYPED_TEST(BothApps, StopWritingAtTheFirstFailure)
{
    for (std::size_t failing = 0; failing < Kind<TypeParam>::kParts; ++failing) {
        WriterProbe writer;
        writer.failingCall = failing;
        EXPECT_EQ(Kind<TypeParam>::WithEverything().ToXmlNode(&writer), writer.failure) << failing;
        // An element that was started is ended, once.
        EXPECT_EQ(writer.calls.size(), failing == 0 ? 1u : std::min(failing + 2, Kind<TypeParam>::kParts));
        EXPECT_EQ(writer.calls.back() == L"end", failing > 0) << failing;
    }
}

TYPED_TEST(BothApps, AreNotWrittenToNothing)
{
    const LogCapture log;
    WriterProbe writer;
    EXPECT_EQ(Kind<TypeParam>::WithEverything().ToXmlNode(nullptr), E_POINTER);
    EXPECT_EQ(Kind<TypeParam>::WithEverything().ToXmlNode(&writer), S_OK);
    EXPECT_EQ(log.Lines(), this->Call("ToXmlNode", "(0x80004003)") + this->Call("ToXmlNode", "(0x00000000)"));
}

TYPED_TEST(BothApps, AreNotReadFromOrIntoNothing)
{
    const XmlSource source(Kind<TypeParam>::kEmptyXml, Kind<TypeParam>::kElement);
    std::unique_ptr<TypeParam> app;
    const LogCapture log;
    EXPECT_EQ(TypeParam::FromXmlNode(nullptr, &app), E_POINTER);
    EXPECT_EQ(TypeParam::FromXmlNode(source.Reader(), nullptr), E_POINTER);
    EXPECT_EQ(app, nullptr);
    EXPECT_EQ(TypeParam::FromXmlNode(source.Reader(), &app), S_OK);
    EXPECT_NE(app, nullptr);
    EXPECT_EQ(log.Lines(), this->Call("FromXmlNode", "(0x80004003)") +
                               this->Call("FromXmlNode", "(0x80004003)") +
                               this->Call("FromXmlNode", "(0x00000000)"));
}

// Whether the record has attributes or not, what is read next is what follows its element.
TYPED_TEST(BothApps, AreReadOnFromToWhatFollows)
{
    for (const char* element : {Kind<TypeParam>::kXml, Kind<TypeParam>::kEmptyXml}) {
        const XmlSource source("<r>" + std::string(element) + "<next/></r>", Kind<TypeParam>::kElement);
        std::unique_ptr<TypeParam> app;
        EXPECT_EQ(TypeParam::FromXmlNode(source.Reader(), &app), S_OK) << element;
        EXPECT_EQ(source.Reader()->Read(nullptr), S_OK) << element;
        EXPECT_EQ(source.Name(), L"next") << element;
    }
}

TYPED_TEST(BothApps, PassTheReadersFailureOn)
{
    for (const char* method : {"MoveToFirstAttribute", "MoveToNextAttribute"}) {
        const XmlSource source(Kind<TypeParam>::kXml, Kind<TypeParam>::kElement);
        ReaderProbe reader(source.Reader());
        reader.Answer(method, 0, E_ABORT);
        std::unique_ptr<TypeParam> app;
        EXPECT_EQ(TypeParam::FromXmlNode(&reader, &app), E_ABORT) << method;
        EXPECT_EQ(app, nullptr) << method;
    }
}

TYPED_TEST(BothApps, AreReadThoughMemoryRunsOut)
{
    const std::size_t failures = ForEachFailingAllocation([](std::size_t index) {
        const XmlSource source(Kind<TypeParam>::kXml, Kind<TypeParam>::kElement);
        std::unique_ptr<TypeParam> app;
        const Attempt attempt =
            TryWithFailingAllocation(index, [&] { return TypeParam::FromXmlNode(source.Reader(), &app); });
        EXPECT_EQ(attempt.result, attempt.failed ? E_OUTOFMEMORY : S_OK);
        EXPECT_EQ(app == nullptr, attempt.failed);
        EXPECT_EQ(attempt.left == 0, attempt.failed);
        return attempt.failed;
    });
    EXPECT_GE(failures, 5u);
}

} // namespace
