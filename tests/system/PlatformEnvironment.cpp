// What all system tests need of the machine: the stand-in's classes, registered once for each run of this
// program.
#include "standin/ModulePath.h"
#include "system/Sandbox.h"

#include <gtest/gtest.h>

namespace {

class PlatformEnvironment : public testing::Environment
{
public:
    void SetUp() override
    {
        const HMODULE platform = LoadLibraryW((test::BuildFolder() + L"\\StandInPlatform.dll").c_str());
        ASSERT_NE(platform, nullptr) << "StandInPlatform.dll does not load";
        const auto registerServer =
            standin::FunctionOf<HRESULT(STDAPICALLTYPE*)()>(platform, "DllRegisterServer");
        ASSERT_NE(registerServer, nullptr);
        ASSERT_EQ(registerServer(), S_OK);
        FreeLibrary(platform);
    }
};

[[maybe_unused]] const auto* const g_environment = testing::AddGlobalTestEnvironment(new PlatformEnvironment);

} // namespace
