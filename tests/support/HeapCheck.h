#pragma once

namespace test {

// Whether the system checks the blocks of this process's heaps, which scripts/test --heap asks it to do. A
// freed block then stays in the heap until about a thousand others were freed.
[[nodiscard]] bool AreHeapsChecked();

// False when something was written behind a block's end or into a freed block. Without the system's checks
// only damaged heap structures are seen.
[[nodiscard]] bool AreHeapsSound();

} // namespace test
