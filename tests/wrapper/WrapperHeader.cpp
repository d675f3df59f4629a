// The wrapper alone, in C++17: everything in it is compiled.
#include "QanHelper.hpp"

#if (defined(_MSVC_LANG) ? _MSVC_LANG : __cplusplus) >= 202002L
#error "this is to be compiled as C++17"
#endif

#include <type_traits>

static_assert(!std::is_copy_constructible_v<qanh::Library> && !std::is_move_constructible_v<qanh::Library>);
static_assert(!std::is_copy_constructible_v<qanh::String> &&
              std::is_nothrow_move_constructible_v<qanh::String>);
static_assert(!std::is_copy_constructible_v<qanh::Launcher>);
static_assert(std::is_base_of_v<std::system_error, qanh::Error>);

// Never run.
int UseAll()
{
    qanh::Launcher launcher(qanh::Source::Linked());
    const qanh::Pending pending = launcher.Launch(qanh::Request::Search(L"Mail"));
    const qanh::Outcome outcome = pending.Get();
    launcher.Launch(qanh::Request::Browser(qanh::TileMode::Desktop), [](const qanh::Outcome&) {});
    const bool isKnown = launcher.GetLibrary().IsInstalled(L"family") || launcher.Cancel(pending.GetTicket());
    const qanh::String name = launcher.GetLibrary().DisplayName(L"family");
    return isKnown && !outcome.Code() && !name.IsEmpty() && launcher.Stop(0) ? 1 : 0;
}
