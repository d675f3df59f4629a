#pragma once

// What nearly every test uses, for short: a test file has "using namespace test;".

#include "support/Apartments.h"
#include "support/CapturingPatch.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"
#include "support/Text.h"
#include "support/Trace.h"

#include <gmock/gmock.h>

#include <windows.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace test {

using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Eq;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::Optional;
using ::testing::StartsWith;

} // namespace test
