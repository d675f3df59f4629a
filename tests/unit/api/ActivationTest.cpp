// The export that starts a Store application by its ID.

#include "QanHelper.h"

#include "support/FakeObjects.h"
#include "support/Test.h"

#include <objbase.h>
#include <shobjidl.h>

#include <stdexcept>

namespace {

using namespace test;

constexpr CLSID kClass = {0x45BA127D, 0x10A8, 0x46EA, {0x8A, 0xB7, 0x56, 0xEA, 0x90, 0x78, 0x94, 0x3C}};
constexpr IID kInterface = {0x2E941141, 0x7F97, 0x4756, {0xBA, 0x1D, 0x9D, 0xEC, 0xDE, 0x89, 0x4A, 0x3D}};

class FakeActivationManager : public FakeUnknown<IApplicationActivationManager>
{
public:
    explicit FakeActivationManager(FakeObjects& owner) : FakeUnknown(owner, "activation manager") {}

    HRESULT STDMETHODCALLTYPE ActivateApplication(LPCWSTR id, LPCWSTR arguments, ACTIVATEOPTIONS options,
                                                  DWORD* processId) override
    {
        const HRESULT hr =
            m_owner.Enter(this, "ActivateApplication",
                          L"(" + std::wstring(id) + L", " + (arguments ? arguments : L"null") + L", " +
                              std::to_wstring(options) + L", " + std::to_wstring(*processId) + L")");
        *processId = 4711;
        return FAILED(hr) ? hr : result;
    }
    HRESULT STDMETHODCALLTYPE ActivateForFile(LPCWSTR, IShellItemArray*, LPCWSTR, DWORD*) override
    {
        return NotImplemented();
    }
    HRESULT STDMETHODCALLTYPE ActivateForProtocol(LPCWSTR, IShellItemArray*, DWORD*) override
    {
        return NotImplemented();
    }

    HRESULT result = S_OK;
};

class Activation : public ::testing::Test
{
protected:
    Activation() : m_manager(m_objects.Make<FakeActivationManager>()) {}

    Lines& Journal() { return m_objects.journal; }

    // A launch with these steps on a thread in this apartment, which is kept.
    void ExpectLaunch(Apartment apartment, HRESULT result, const Lines& steps,
                      const wchar_t* arguments = nullptr)
    {
        EXPECT_TRUE(KeepsApartment(apartment, [&] {
            Journal().clear();
            EXPECT_EQ(QanhLaunchByManager(L"Mail_1!App", arguments), result);
            EXPECT_EQ(Journal(), steps);
        })) << ::testing::PrintToString(apartment);
    }

    FakeObjects m_objects;
    FakeActivationManager* m_manager;
    HRESULT m_refusal = S_OK; // what CoInitialize answers when it is a failure

private:
    // The runtime yields with pauses of 0 where a test starts a thread.
    const FakeSleep m_sleep{[this](DWORD milliseconds) {
        if (milliseconds != 0) {
            m_objects.Note("Sleep " + std::to_string(milliseconds));
        }
    }};
    const CapturingPatch<decltype(&CoInitialize)> m_initialize{
        "CoInitialize", [this](void* reserved) {
            EXPECT_EQ(reserved, nullptr);
            const HRESULT hr = FAILED(m_refusal) ? m_refusal : m_initialize.Original(reserved);
            m_objects.NoteResult("CoInitialize", hr);
            return hr;
        }};
    const CapturingPatch<decltype(&CoUninitialize)> m_uninitialize{
        "CoUninitialize", [this] {
            m_objects.Note(m_objects.IsAnyHeld() ? "CoUninitialize too early" : "CoUninitialize");
            m_uninitialize.Original();
        }};
    const CapturingPatch<decltype(&CoCreateInstance)> m_create{
        "CoCreateInstance",
        [this](REFCLSID classId, IUnknown* outer, DWORD context, REFIID interfaceId, void** object) {
            const bool isAsked = IsEqualGUID(classId, kClass) && !outer && context == 1 &&
                                 IsEqualGUID(interfaceId, kInterface);
            const HRESULT hr =
                m_objects.EnterMaker("CoCreateInstance", isAsked ? L"" : L" of something else");
            if (FAILED(hr)) {
                return hr;
            }
            m_manager->AddRef();
            *object = static_cast<IApplicationActivationManager*>(m_manager);
            return hr;
        }};
};

TEST_F(Activation, HandsBothTextsToTheActivationManager)
{
    ExpectLaunch(Apartment::kNone, S_OK,
                 {"CoInitialize = 0x00000000", "CoCreateInstance",
                  "ActivateApplication(Mail_1!App, -open \"a b\" \xE5\xA4\xA9, 0, 0)", "CoUninitialize",
                  "Sleep 100"},
                 L"-open \"a b\" \u5929");
}

TEST_F(Activation, HasNoExitLineAndTakesNoArguments)
{
    const LogCapture log;
    for (const wchar_t* arguments : {L"-open", static_cast<const wchar_t*>(nullptr), L""}) {
        EXPECT_EQ(QanhLaunchByManager(L"Mail_1!App", arguments), S_OK);
    }
    EXPECT_THAT(log.Lines(), ElementsAre("QanhLaunchByManager(Mail_1!App, -open) IN",
                                         "QanhLaunchByManager(Mail_1!App, (null)) IN",
                                         "QanhLaunchByManager(Mail_1!App, ) IN"));
    EXPECT_EQ(Journal()[7], "ActivateApplication(Mail_1!App, null, 0, 0)");
    EXPECT_EQ(Journal()[12], "ActivateApplication(Mail_1!App, , 0, 0)");
}

TEST_F(Activation, ReturnsTheResultAsItIsAfterThePause)
{
    for (const HRESULT result : {S_FALSE, HRESULT_FROM_WIN32(ERROR_NOT_FOUND), E_FAIL, HRESULT(0x00270255)}) {
        m_manager->result = result;
        const LogCapture log;
        ExpectLaunch(Apartment::kNone, result,
                     {"CoInitialize = 0x00000000", "CoCreateInstance",
                      "ActivateApplication(Mail_1!App, null, 0, 0)", "CoUninitialize", "Sleep 100"});
        EXPECT_THAT(log.Lines(), ElementsAre("QanhLaunchByManager(Mail_1!App, (null)) IN"));
    }
}

TEST_F(Activation, WithoutAManagerReturnsAtOnce)
{
    m_objects.Fail("CoCreateInstance", REGDB_E_CLASSNOTREG);
    const LogCapture log;
    ExpectLaunch(Apartment::kNone, REGDB_E_CLASSNOTREG,
                 {"CoInitialize = 0x00000000", "CoCreateInstance", "CoUninitialize"});
    EXPECT_THAT(log.Lines(), ElementsAre("QanhLaunchByManager(Mail_1!App, (null)) IN"));
}

// Two leavings of one entrance would leave the host's apartment as well.
TEST_F(Activation, WorksInASingleThreadedApartmentWhichIsLeftOnce)
{
    ExpectLaunch(Apartment::kSingleThreaded, S_OK,
                 {"CoInitialize = 0x00000001", "CoCreateInstance",
                  "ActivateApplication(Mail_1!App, null, 0, 0)", "CoUninitialize", "Sleep 100"});
    m_objects.Fail("CoCreateInstance", E_NOINTERFACE);
    ExpectLaunch(Apartment::kSingleThreaded, E_NOINTERFACE,
                 {"CoInitialize = 0x00000001", "CoCreateInstance", "CoUninitialize"});
}

// What was not entered must not be left: the thread's objects would lose their apartment.
TEST_F(Activation, WorksInTheMultithreadedApartmentWhichIsNotLeft)
{
    ExpectLaunch(Apartment::kMultithreaded, S_OK,
                 {"CoInitialize = 0x80010106", "CoCreateInstance",
                  "ActivateApplication(Mail_1!App, null, 0, 0)", "Sleep 100"});
    m_objects.Fail("CoCreateInstance", E_FAIL);
    ExpectLaunch(Apartment::kMultithreaded, E_FAIL, {"CoInitialize = 0x80010106", "CoCreateInstance"});
}

TEST_F(Activation, DoesNotMindThatNoApartmentCouldBeEntered)
{
    EXPECT_TRUE(KeepsApartment(Apartment::kSingleThreaded, [&] {
        m_refusal = E_OUTOFMEMORY;
        EXPECT_EQ(QanhLaunchByManager(L"Mail_1!App", L"-open"), S_OK);
        EXPECT_THAT(Journal(), ElementsAre("CoInitialize = 0x8007000E", "CoCreateInstance",
                                           "ActivateApplication(Mail_1!App, -open, 0, 0)", "Sleep 100"));
    }));
    // Without any, it fails at the manager.
    ExpectLaunch(Apartment::kNone, CO_E_NOTINITIALIZED, {"CoInitialize = 0x8007000E", "CoCreateInstance"});
}

TEST_F(Activation, ReleasesEverythingWhenTheActivationRaises)
{
    m_objects.At("ActivateApplication", [] { throw std::runtime_error("of the activation manager"); });
    for (const Apartment apartment :
         {Apartment::kNone, Apartment::kSingleThreaded, Apartment::kMultithreaded}) {
        EXPECT_TRUE(KeepsApartment(apartment, [this, apartment] {
            EXPECT_THROW(QanhLaunchByManager(L"Mail_1!App", nullptr), std::runtime_error);
            EXPECT_EQ(Journal().back() == "CoUninitialize", apartment != Apartment::kMultithreaded);
        })) << ::testing::PrintToString(apartment);
        EXPECT_EQ(m_manager->References(), 0);
    }
}

TEST_F(Activation, TakesTextsOfAnyLength)
{
    const std::wstring id(3000, L'i');
    const std::wstring arguments(30000, L'a');
    EXPECT_EQ(QanhLaunchByManager(id.c_str(), arguments.c_str()), S_OK);
    EXPECT_EQ(Journal()[2].size(), 3000 + 30000 + std::string("ActivateApplication(, , 0, 0)").size());
}

} // namespace
