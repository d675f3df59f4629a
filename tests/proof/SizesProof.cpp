// Sizes that nobody would choose: the library's work takes longer or is not done, and its host goes on.
#include "proof/HostileTest.h"
#include "system/Manifest.h"

#include <gmock/gmock.h>

namespace {

using proof::Names;
using proof::ok;
using proof::ScopedFile;

using Sizes = proof::HostileTest;

int CountOf(std::string_view part, std::string_view text)
{
    int count = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string_view::npos; at += part.size()) {
        ++count;
    }
    return count;
}

// An element inside an element and so on, each of them closed.
std::string Nested(int depth)
{
    std::string opened;
    std::string closed;
    for (int level = 0; level < depth; ++level) {
        opened += "<a>";
        closed += "</a>";
    }
    return opened + closed;
}

// The documented reader, and the runtime's, give up at a depth of about 256 elements
// (XmlReaderProperty_MaxElementDepth).
constexpr int kShallow = 200;
constexpr int kDeep = 10000;

TEST_F(Sizes, CatalogOfManyPackages)
{
    const int count = proof::Count(1500, 100000);
    std::string packages;
    Names mails;
    for (int index = 0; index < count; ++index) {
        const bool isMail = index % 1000 == 0;
        const std::string name = (isMail ? "mail " : "tool ") + std::to_string(index);
        if (isMail) {
            mails.push_back(name);
        }
        packages += "<Package PackageFamilyName=\"Vel.P" + std::to_string(index) +
                    "_0standin00000\" Version=\"1.0.0.0\" NeedReserve=\"1\"><MetroApp DisplayName=\"" + name +
                    "\"/></Package>\r\n";
    }
    WriteCatalog(proof::CatalogOf(packages, ""));
    const auto host = Start("QanhInitialize with that catalogue");
    proof::Figure("packages of the catalogue", count);
    proof::Figure("a query then", Time([&] { EXPECT_EQ(NamesOf(*host), mails); }), "ms");
    host->Do("go");
    Sleep(300);
    // Each of them is asked about; the stop comes between two.
    proof::Figure("QanhFinalize while a pass asks about each of them", Stop(*host), "ms");
    ExpectWell(*host);
    EXPECT_EQ(CountOf("<Package ", test::ReadFileBytes(m_sandbox.CatalogFile())), count);
    const auto next = Start();
    // A pass that came to its end has found that none is installed.
    EXPECT_THAT(NamesOf(*next), testing::AnyOf(testing::Eq(mails), testing::IsEmpty()));
}

TEST_F(Sizes, StoreOfManyPackages)
{
    const int count = proof::Count(100, 2000);
    for (int index = 0; index < count; ++index) {
        const std::string name = "Vel.P" + std::to_string(10000 + index);
        m_sandbox.WritePackage(test::FromUtf8(name),
                               test::Manifest(name, "1.0.0.0", "mail " + std::to_string(index), "short"), "");
    }
    const auto host = Start();
    proof::Figure("packages of the store", count);
    proof::Figure("first pass over them", Pass(*host), "ms");
    EXPECT_EQ(NamesOf(*host).size(), static_cast<std::size_t>(count));
    Stop(*host);
    ExpectWell(*host);
}

TEST_F(Sizes, NamesOf16MebibytesAreNamesLikeOthers)
{
    const std::size_t size = proof::Count<std::size_t>(1 << 20, 16 << 20);
    const std::string big = "big mail " + std::string(size, 'x');
    const std::string store = "store mail " + std::string(size, 'y');
    WriteCatalog(
        proof::CatalogOf("", Kept(big) + proof::DesktopRecord("tool", "C:\\" + std::string(size, 'z'), true) +
                                 Kept("kept mail")));
    m_sandbox.WritePackage(L"Vel.Big", test::Manifest("Vel.Big", "1.0.0.0", store, "s"), "");
    const auto host = Start("QanhInitialize with names of that length");
    proof::Figure("characters of a name", static_cast<double>(size));
    EXPECT_EQ(NamesOf(*host), Names({big, "kept mail"}));
    proof::Figure("first pass with them", Pass(*host), "ms");
    EXPECT_EQ(NamesOf(*host), Names({store, big, "kept mail"}));
    Stop(*host);
    ExpectWell(*host);
    const auto next = Start();
    EXPECT_EQ(NamesOf(*next), Names({store, big, "kept mail"})) << "saved and read again";
}

TEST_F(Sizes, NestingEndsTheReadingAndNothingElse)
{
    const auto catalog = [this](int depth) {
        return "<Applications><MetroApps/><DesktopApps>" + Kept("kept mail") + Nested(depth) +
               Kept("behind mail") + "</DesktopApps></Applications>";
    };
    const auto writePackage = [this](const std::string& name, const std::string& displayName, int depth) {
        std::string manifest = test::Manifest("Vel." + name, "1.0.0.0", displayName, "s");
        const std::size_t begin = manifest.find("<Application ");
        const std::size_t end = manifest.find("  </Applications>");
        std::string another = manifest.substr(begin, end - begin);
        another.replace(another.find(displayName), displayName.size(), displayName + " behind");
        manifest.insert(end, Nested(depth) + another);
        m_sandbox.WritePackage(test::FromUtf8("Vel." + name), manifest,
                               "name = Vel." + name + "\nversion = 1.0.0.0");
    };
    WriteCatalog(catalog(kShallow));
    EXPECT_EQ(NamesOf(*Start()), Names({"kept mail", "behind mail"})) << "depth alone is no obstacle";

    WriteCatalog(catalog(kDeep));
    writePackage("Shallow", "flat mail", kShallow);
    writePackage("Deep", "deep mail", kDeep);
    m_sandbox.AddCommonShortcut(L"found mail.lnk");
    const auto host = Start();
    EXPECT_EQ(NamesOf(*host), Names({"kept mail"})) << "what stands behind is not read";
    Pass(*host);
    EXPECT_EQ(NamesOf(*host),
              Names({"deep mail", "flat mail", "flat mail behind", "kept mail", "found mail"}));
    Stop(*host);
    ExpectWell(*host);
}

TEST_F(Sizes, CatalogOfAGibibyteIsReadAndMadeSmallAgain)
{
    const std::size_t size = proof::Count<std::size_t>(8 << 20, 1 << 30);
    m_sandbox.AddCommonShortcut(L"found mail.lnk");
    test::MakeFolder(m_sandbox.CatalogFolder());
    {
        ScopedFile file(m_sandbox.CatalogFile(), 0, CREATE_ALWAYS);
        file.Write("<Applications><MetroApps/><DesktopApps>" + Kept("first mail"));
        const std::string element = "<Unknown Value=\"" + std::string(4000, 'v') + "\"/>\r\n";
        std::string portion;
        while (portion.size() < 1 << 20) {
            portion += element;
        }
        for (std::size_t written = 0; written < size; written += portion.size()) {
            file.Write(portion);
        }
        file.Write(Kept("last mail") + "</DesktopApps></Applications>");
    }
    const auto host = Start("QanhInitialize with that catalogue");
    proof::Figure("bytes of the catalogue", static_cast<double>(size));
    EXPECT_EQ(NamesOf(*host), Names({"first mail", "last mail"}));
    proof::Figure("first pass with its save, which copies it", Pass(*host), "ms");
    EXPECT_EQ(NamesOf(*host), Names({"first mail", "last mail", "found mail"}));
    Stop(*host);
    ExpectWell(*host);
    EXPECT_LT(test::ReadFileBytes(m_sandbox.CatalogFile()).size(), 2000u);
    EXPECT_EQ(NamesOf(*Start()), Names({"first mail", "last mail", "found mail"}));
}

TEST_F(Sizes, CatalogWithAGibibyteOfZerosBehindItKeepsWhatStandsBefore)
{
    m_sandbox.AddCommonShortcut(L"found mail.lnk");
    test::MakeFolder(m_sandbox.CatalogFolder());
    {
        ScopedFile file(m_sandbox.CatalogFile(), 0, CREATE_ALWAYS);
        file.Write("<Applications><MetroApps/><DesktopApps>" + Kept("first mail"));
        file.EnlargeTo(proof::Count<LONGLONG>(8 << 20, 1 << 30));
    }
    const auto host = Start();
    EXPECT_EQ(NamesOf(*host), Names({"first mail"}));
    Pass(*host);
    Stop(*host);
    ExpectWell(*host);
    EXPECT_EQ(NamesOf(*Start()), Names({"first mail", "found mail"}));
}

TEST_F(Sizes, FolderOfManyShortcuts)
{
    const int count = proof::Count(1000, 50000);
    for (int index = 0; index < count; ++index) {
        m_sandbox.AddCommonShortcut((index % 1000 == 0 ? L"mail " : L"tool ") +
                                    std::to_wstring(100000 + index) + L".lnk");
    }
    const auto host = Start();
    proof::Figure("shortcuts of one folder", count);
    proof::Figure("first pass over it", Pass(*host), "ms");
    EXPECT_EQ(NamesOf(*host).size(), static_cast<std::size_t>(count / 1000));
    proof::Figure("QanhFinalize then", Stop(*host), "ms");
    ExpectWell(*host);
    const auto next = Start("QanhInitialize with them in the catalogue");
    EXPECT_EQ(NamesOf(*next).size(), static_cast<std::size_t>(count / 1000));
    next->Do("go");
    Sleep(200);
    proof::Figure("QanhFinalize in the middle of a pass over it", Stop(*next), "ms");
    ExpectWell(*next);
}

} // namespace
