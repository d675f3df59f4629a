// A host in C++ that is built against the unpacked package: starts the library, asks it, and stops it.

#include <QanHelper.h>
#include <QanHelper.hpp> // that it can be compiled is all that is asked of it here

#include <cstdio>

namespace {

int g_failures = 0;

void Expect(const char* what, HRESULT result, HRESULT expected)
{
    std::printf("%s: 0x%08X\n", what, static_cast<unsigned>(result));
    if (result != expected) {
        std::printf("  0x%08X was expected\n", static_cast<unsigned>(expected));
        ++g_failures;
    }
}

} // namespace

int main()
{
    Expect("QanhInitialize", QanhInitialize(), S_OK);
    BOOL isInstalled = TRUE;
    Expect("QanhIsInstalled", QanhIsInstalled(L"Vel.Unknown_1vel7kq0n3rta", &isInstalled), S_OK);
    if (isInstalled) {
        std::printf("  it is not installed\n");
        ++g_failures;
    }
    LPWSTR name = nullptr;
    Expect("QanhGetAppDisplayNameByPFN", QanhGetAppDisplayNameByPFN(L"Vel.Unknown_1vel7kq0n3rta", &name),
           QANH_E_NO_PACKAGE);
    QanhReleaseString(name);
    Expect("QanhLaunchBySearch without a name", QanhLaunchBySearch(L"", QANH_SEARCH_LAUNCH, TRUE),
           E_INVALIDARG);
    QanhFinalize();
    return g_failures == 0 ? 0 : 1;
}
