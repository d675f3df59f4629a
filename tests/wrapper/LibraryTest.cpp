// The library as an object: where it comes from, its queries, its strings, and what is thrown.
#include "wrapper/WrapperTest.h"

#include "standin/Settings.h"

#include <new>
#include <thread>

namespace {

using testing::StartsWith;

// What is thrown by the function, S_OK for nothing.
template <typename Function> HRESULT Thrown(Function function)
{
    try {
        function();
        return S_OK;
    } catch (const qanh::Error& error) {
        return error.Result();
    }
}

HRESULT ThrownByLoading(const std::wstring& path)
{
    return Thrown([&] { const qanh::Library library{qanh::Source::File(path)}; });
}

int g_released = 0;

void WINAPI CountRelease(LPWSTR text)
{
    EXPECT_STREQ(text, L"text");
    ++g_released;
}

std::string g_calls;

// Plays a library that was brought up while another process was in its first refresh, whose texts cannot be
// resolved, and that has no memory to split an ID.
qanh::Source GivenLibrary()
{
    qanh::Functions functions;
    functions.initialize = []() -> HRESULT {
        g_calls += "initialize";
        return S_FALSE;
    };
    functions.finalize = [] { g_calls += "finalize"; };
    functions.releaseString = &CountRelease;
    functions.isInstalledById = [](LPCWSTR, BOOL*) -> HRESULT { throw std::bad_alloc(); };
    functions.getDisplayName = [](LPCWSTR, LPWSTR* name) -> HRESULT {
        static wchar_t text[] = L"text";
        EXPECT_EQ(*name, nullptr);
        *name = text;
        return E_FAIL;
    };
    return qanh::Source::Given(functions);
}

class WrappedLibrary : public test::WrapperTest
{
};

TEST_F(WrappedLibrary, IsUpWhileTheObjectLives)
{
    {
        const qanh::Library library(test::kBuiltLibrary);
        EXPECT_TRUE(library.IsRefreshing());
        EXPECT_TRUE(IsLibraryLoaded());
        EXPECT_TRUE(test::IsFirstPassRunning(L"wrapper_tests"));
        EXPECT_FALSE(qanh::WaitForFirstRefresh(0));
        EXPECT_TRUE(qanh::WaitForFirstRefresh(20000));
        EXPECT_TRUE(test::Exists(sandbox.CatalogFile(L"wrapper_tests")));
    }
    EXPECT_FALSE(IsLibraryLoaded());
}

TEST_F(WrappedLibrary, TellsThatItDoesNotRefresh)
{
    g_calls.clear();
    {
        const qanh::Library library(GivenLibrary());
        EXPECT_FALSE(library.IsRefreshing());
        g_calls += ", ";
    }
    EXPECT_EQ(g_calls, "initialize, finalize");
}

// The library may hand out a string although it fails.
TEST_F(WrappedLibrary, StringOfAFailedCallIsReleased)
{
    g_released = 0;
    const qanh::Library library(GivenLibrary());
    EXPECT_EQ(Thrown([&] { (void)library.DisplayName(L"family"); }), E_FAIL);
    EXPECT_EQ(g_released, 1);
}

// What the library raises may lie in memory of its own, so it is not what the host gets.
TEST_F(WrappedLibrary, ExceptionOfTheLibraryBecomesAnErrorOfTheHost)
{
    const qanh::Library library(GivenLibrary());
    EXPECT_EQ(Thrown([&] { (void)library.IsInstalledById(L"family!app"); }), E_OUTOFMEMORY);
}

TEST_F(WrappedLibrary, CannotBeLoadedFromElsewhere)
{
    EXPECT_EQ(ThrownByLoading(L"QanHelper.dll"), E_INVALIDARG) << "not a full path";
    EXPECT_EQ(ThrownByLoading(L".\\QanHelper.dll"), E_INVALIDARG) << "not a full path";
    EXPECT_EQ(ThrownByLoading(sandbox.Folder() + L"\\QanHelper.dll"),
              HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND));
    EXPECT_EQ(ThrownByLoading(test::BuildFolder() + L"\\StandInPlatform.dll"),
              HRESULT_FROM_WIN32(ERROR_PROC_NOT_FOUND));
}

TEST_F(WrappedLibrary, CannotBeUsedInAMultithreadedApartment)
{
    std::thread([] {
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
        EXPECT_EQ(Thrown([] { const qanh::Library library(test::kBuiltLibrary); }), RPC_E_CHANGED_MODE);
        CoUninitialize();
    }).join();
}

TEST_F(WrappedLibrary, AnswersQueriesOnAnyThread)
{
    sandbox.AddSamplePackage(L"Vel.Calendar");
    sandbox.AddSamplePackage(L"Vel.Post");
    const qanh::Library library(test::kBuiltLibrary);
    std::thread([&library] {
        EXPECT_TRUE(library.IsInstalled(L"Vel.Calendar_1vel7kq0n3rta"));
        EXPECT_FALSE(library.IsInstalled(L"Vel.Nobody_1vel7kq0n3rta"));
        EXPECT_TRUE(library.IsInstalledById(L"Vel.Calendar_1vel7kq0n3rta!Calendar"));
        EXPECT_FALSE(library.IsInstalledById(L"Vel.Nobody_1vel7kq0n3rta!Calendar"));
        EXPECT_EQ(library.DisplayName(L"Vel.Calendar_1vel7kq0n3rta").ToString(), L"Calendar");
        EXPECT_EQ(Thrown([&] { (void)library.DisplayName(L"Vel.Nobody_1vel7kq0n3rta"); }), QANH_E_NO_PACKAGE);
        EXPECT_EQ(Thrown([&] { (void)library.DisplayName(L"Vel.Post_1vel7kq0n3rta"); }),
                  QANH_E_SEVERAL_APPLICATIONS);
        EXPECT_EQ(Thrown([&] { (void)library.DisplayName(L""); }), E_INVALIDARG);
        EXPECT_EQ(Thrown([&] { (void)library.IsInstalled(L""); }), E_INVALIDARG);
        EXPECT_EQ(Thrown([&] { (void)library.IsInstalledById(L""); }), E_INVALIDARG);
        EXPECT_EQ(library.Activate(L"Nobody!App"), static_cast<HRESULT>(0x80270254));
        EXPECT_EQ(library.Activate(L""), E_INVALIDARG);
    }).join();
}

TEST_F(WrappedLibrary, LaunchesOnItsOwnThread)
{
    sandbox.AddApplication(L"Mail.lnk");
    desktop = std::make_unique<test::DesktopProcess>(sandbox);
    qanh::Library library(test::kBuiltLibrary);
    EXPECT_EQ(library.LaunchBySearch(L"Mail", qanh::SearchMode::Launch, false), S_OK);
    EXPECT_EQ(desktop->Started(), "Mail");
    EXPECT_EQ(library.LaunchBySearch(L""), E_INVALIDARG);
    EXPECT_EQ(library.LaunchBrowser(static_cast<qanh::TileMode>(3)), E_INVALIDARG);
}

TEST(WrappedString, IsReleasedOnce)
{
    g_released = 0;
    wchar_t text[] = L"text";
    {
        qanh::String first(text, &CountRelease);
        qanh::String second(std::move(first));
        qanh::String third;
        third = std::move(second);
        EXPECT_STREQ(third.c_str(), L"text");
        EXPECT_EQ(third.View(), L"text");
        EXPECT_FALSE(third.IsEmpty());
        EXPECT_EQ(g_released, 0);
    }
    EXPECT_EQ(g_released, 1);
}

TEST(WrappedString, OfNothingIsEmpty)
{
    g_released = 0;
    {
        const qanh::String none(nullptr, &CountRelease);
        EXPECT_STREQ(none.c_str(), L"");
        EXPECT_TRUE(none.IsEmpty());
        EXPECT_TRUE(qanh::String().IsEmpty());
    }
    EXPECT_EQ(g_released, 0);
}

TEST(WrappedResult, HasANameAndASentence)
{
    EXPECT_EQ(qanh::Describe(E_POINTER), "E_POINTER (0x80004003): a required pointer is null");
    EXPECT_EQ(qanh::Describe(QANH_E_NO_PACKAGE),
              "QANH_E_NO_PACKAGE (0xA0000001): no package of that family is installed for the user");
    EXPECT_STREQ(qanh::FindResult(RPC_E_CHANGED_MODE)->name, "RPC_E_CHANGED_MODE");
    EXPECT_EQ(qanh::FindResult(static_cast<HRESULT>(0x81234567)), nullptr);
    EXPECT_EQ(qanh::Describe(static_cast<HRESULT>(0x81234567)), "0x81234567")
        << "the system does not know it";
    EXPECT_THAT(qanh::Describe(HRESULT_FROM_WIN32(ERROR_DISK_FULL)), StartsWith("0x80070070: "));
}

TEST(WrappedResult, IsAnErrorCode)
{
    const std::error_code code = qanh::ToErrorCode(E_OUTOFMEMORY);
    EXPECT_TRUE(code);
    EXPECT_EQ(code, std::errc::not_enough_memory);
    EXPECT_EQ(code.category(), qanh::Category());
    EXPECT_STREQ(code.category().name(), "QanHelper");
    EXPECT_EQ(qanh::ToErrorCode(E_INVALIDARG), std::errc::invalid_argument);
    EXPECT_FALSE(qanh::ToErrorCode(S_OK));
    const qanh::Error error(E_FAIL, "QanhIsInstalled");
    EXPECT_EQ(error.Result(), E_FAIL);
    EXPECT_THAT(error.what(), StartsWith("QanhIsInstalled: E_FAIL (0x80004005): "));
}

} // namespace
