#pragma once

#include "common/WinRtError.h"
#include "discovery/PackageManager.h"
#include "support/Apartments.h"
#include "support/FakePackages.h"
#include "support/LogCapture.h"
#include "support/Text.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace store_test {

inline constexpr wchar_t kFamily[] = L"mail_1";

// What the log says of a failure.
inline std::string Message(HRESULT result)
{
    return test::ToUtf8(WinRtError(result).Message());
}

// The system's packages, as the queries see them.
class StoreQueries : public ::testing::Test
{
protected:
    ~StoreQueries() override { EXPECT_THAT(m_store.objects.Leaks(), ::testing::IsEmpty()); }

    std::vector<std::string>& Journal() { return m_store.objects.journal; }

    test::FakeStore m_store;
};

} // namespace store_test
