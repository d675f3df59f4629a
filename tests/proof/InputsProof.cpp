// Reads generated catalogues and manifests with the platform's own XML reader. No file may crash the library
// or hold it up.

#include "proof/CatalogueCases.h"
#include "proof/ManifestCases.h"
#include "proof/Proof.h"
#include "proof/XmlFromBytes.h"

#include "catalog/ExcludeList.h"
#include "catalog/Package.h"
#include "common/Apartment.h"
#include "manifest/ManifestReader.h"
#include "support/CutDocument.h"
#include "support/FakePackages.h"
#include "support/FakeResources.h"
#include "support/TemporaryFolder.h"
#include "support/Test.h"
#include "support/Text.h"
#include "unit/catalog/WriterProbe.h"

#include <atomic>
#include <cstdio>
#include <fstream>
#include <thread>

namespace {

using namespace test;

// Ends the program when one input takes longer than any may.
class Watchdog
{
public:
    Watchdog() : m_thread([this] { Watch(); }) {}
    ~Watchdog()
    {
        SetEvent(m_end);
        m_thread.join();
        CloseHandle(m_end);
    }
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    // The next input begins.
    void Begin(const std::string& text)
    {
        m_text.store(&text);
        ++m_inputs;
    }

private:
    static constexpr DWORD kLongest = 60000;

    void Watch()
    {
        long long before = -1;
        while (WaitForSingleObject(m_end, kLongest) == WAIT_TIMEOUT) {
            if (m_inputs == before) {
                std::printf("seed %u: this input does not come to an end:\n%s\n", proof::Seed(),
                            m_text.load()->c_str());
                std::fflush(stdout);
                TerminateProcess(GetCurrentProcess(), 99);
            }
            before = m_inputs;
        }
    }

    HANDLE m_end = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::atomic<long long> m_inputs = 0;
    std::atomic<const std::string*> m_text = nullptr;
    std::thread m_thread; // the last: it uses the others
};

// A null character is the end of a document for the runtime's own reader.
bool IsForThisReader(const std::string& text)
{
    return !test::EndsTheProcess(text.substr(0, text.find('\0')));
}

// Calls tryFile(path) with so many documents; those that are not for this reader come on top.
template <typename Make, typename Try> void ForEachDocument(const char* what, Make make, Try tryFile)
{
    const TemporaryFolder folder;
    const std::wstring path = folder / L"file.xml";
    Watchdog watchdog;
    std::mt19937 random(proof::Seed());
    const int count = proof::Count(400, 100000);
    int left = 0;
    for (int done = 0; done < count && !testing::Test::HasFailure();) {
        const std::vector<std::uint8_t> data = proof::RandomBytes(random);
        proof::Bytes bytes(data.data(), data.size());
        proof::DocumentMaker maker(bytes);
        const std::string text = make(maker);
        if (!IsForThisReader(text)) {
            ++left;
            continue;
        }
        WriteFileBytes(path, text);
        watchdog.Begin(text);
        SCOPED_TRACE("seed " + std::to_string(proof::Seed()) + ":\n" + text);
        tryFile(path);
        ++done;
        proof::Progress(done, count);
    }
    proof::Figure((std::string(what) + " read by the runtime's reader").c_str(), count, "files");
    proof::Figure((std::string(what) + " left out: they end that reader").c_str(), left, "files");
}

std::string Calls(const CQanhAppNameList& list)
{
    WriterProbe writer;
    const WriterInstead instead(&writer);
    EXPECT_EQ(list.Save((TemporaryFolder() / L"saved").c_str()), S_OK);
    return proof::TextOfCalls(writer.calls);
}

TEST(Inputs, AnyCatalogueIsReadToAnEnd)
{
    long long records = 0;
    ForEachDocument(
        "generated catalogues", [](proof::DocumentMaker& maker) { return maker.Catalogue(); },
        [&](const std::wstring& path) {
            CQanhAppNameList list;
            const HRESULT read = list.Load(path.c_str());
            EXPECT_TRUE(read == S_FALSE || FAILED(read)) << read;
            ExcludeList excluded;
            BOOL found = FALSE;
            EXPECT_EQ(list.GetExcludeAppNameList(L"mail", &excluded, &found), S_OK);
            records +=
                static_cast<long long>(list.PackageFamilyNames().size() + list.DesktopShortcuts().size());
        });
    EXPECT_GT(records, 0);
    proof::Figure("records in them", static_cast<double>(records));
}

TEST(Inputs, AnyManifestIsReadToAnEnd)
{
    long long names = 0;
    ForEachDocument(
        "generated manifests", [](proof::DocumentMaker& maker) { return maker.Manifest(); },
        [&](const std::wstring& path) {
            CQanhPackage package(L"family", L"full name", L"name", RecordVersion());
            const HRESULT read = CQanhManifestReader::GetAppNameUsingXmlParser(path.c_str(), &package);
            EXPECT_TRUE(read == S_FALSE || FAILED(read)) << read;
            BOOL can = FALSE;
            const HRESULT checked =
                CQanhManifestReader::IsCanGetAppNameFromManifest(path.c_str(), &package, &can);
            EXPECT_TRUE(!can || (checked == S_FALSE && read == S_FALSE)) << checked;
            names += static_cast<long long>(package.Apps().Size());
        });
    EXPECT_GT(names, 0);
    proof::Figure("applications in them", static_cast<double>(names));
}

// Calls tryFile(path, case) with the cases, which are made when the program is built.
template <typename Case, typename Try> void ForEachCase(const char* cases, const wchar_t* name, Try tryFile)
{
    std::ifstream input(cases, std::ios::binary);
    ASSERT_TRUE(input) << cases;
    const TemporaryFolder folder;
    const std::wstring path = folder / name;
    Watchdog watchdog;
    const int count = proof::Count(300, 2000);
    int done = 0;
    for (Case tried; done < count && !testing::Test::HasFailure() && proof::ReadCase(input, tried); ++done) {
        WriteFileBytes(path, tried.document);
        watchdog.Begin(tried.document);
        SCOPED_TRACE(tried.document);
        tryFile(path, tried);
        proof::Progress(done, count);
    }
    EXPECT_EQ(done, count);
    proof::Figure("files of which library and model make the same", done, "files");
}

TEST(Inputs, CataloguesHoldWhatTheModelReads)
{
    ForEachCase<proof::CatalogueCase>(CATALOGUE_CASES, L"file.xml",
                                      [](const std::wstring& path, const proof::CatalogueCase& tried) {
                                          CQanhAppNameList list;
                                          EXPECT_EQ(list.Load(path.c_str()), S_FALSE);
                                          EXPECT_EQ(Calls(list), tried.calls);
                                          proof::MarkAllInstalled(list);
                                          EXPECT_EQ(Calls(list), tried.allCalls);
                                      });
}

TEST(Inputs, ManifestsHoldWhatTheModelReads)
{
    const ComApartment apartment(CoInitialize(nullptr)); // the package's
    ForEachCase<proof::ManifestCase>(
        MANIFEST_CASES, L"AppxManifest.xml", [](const std::wstring& path, const proof::ManifestCase& tried) {
            FakeResources resources;
            resources.texts = tried.texts;
            FakeObjects objects;
            PackageFacts facts;
            facts.fullName = proof::kModelFullName;
            facts.name = proof::kModelName;
            facts.path = path.substr(0, path.rfind(L'\\'));
            const auto takeSources = [&] {
                std::vector<std::wstring> sources = resources.Sources();
                resources.requests.clear();
                return sources;
            };
            FakePackage* const package = objects.Make<FakePackage>(facts);
            package->AddRef();
            EXPECT_EQ(proof::TextOfResults(path.c_str(), package, takeSources), tried.results);
            package->Release();
        });
}

} // namespace
