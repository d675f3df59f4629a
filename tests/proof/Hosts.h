// What the proofs that drive hosts share.
#pragma once

#include "proof/Proof.h"
#include "support/Text.h"
#include "system/HostProcess.h"

#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace proof {

inline constexpr char ok[] = "0x00000000";
inline constexpr char readToItsEnd[] = "0x00000001"; // QanhInitialize in a process that does not refresh

// The excluded names of a query, in its order.
[[nodiscard]] std::vector<std::string> NamesIn(std::string_view query);

// A desktop record of a catalogue file; the names need no escapes.
[[nodiscard]] std::string DesktopRecord(const std::string& name, const std::string& shortcut,
                                        bool isReserved = false);
[[nodiscard]] std::string CatalogOf(const std::string& packages, const std::string& desktopRecords);

// Whole numbers up to the limit, the limit included, from the proof's seed on.
class Random
{
public:
    unsigned UpTo(unsigned limit) { return std::uniform_int_distribution<unsigned>(0, limit)(m_engine); }

private:
    std::mt19937 m_engine{Seed()};
};

// What a process holds at a moment.
struct Holdings
{
    std::size_t handles;
    std::size_t threads;
    std::size_t heap; // bytes
    std::size_t gdiObjects;
    std::size_t windows;
};
[[nodiscard]] Holdings HoldingsOf(test::HostProcess& host);

// Nothing of the host's files says that a process of it is up: no mutex of a first pass, no turn at the
// catalogue file.
void ExpectNoNamedObjects(const test::Sandbox& sandbox);

} // namespace proof
