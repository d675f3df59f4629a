#pragma once

#include "system/Golden.h"

#include <string>
#include <string_view>

// What the reading of a package's manifest leaves in the log: pieces of goldens, in the order of the reading.
namespace test {

inline constexpr char applicationIsFound[] = R"(
    CQanhManifestReader::MoveToElementByName(Applications) IN ... OUT(0x00000000)
    CQanhManifestReader::MoveToElementByName(Application) IN ... OUT(0x00000000)
)";

inline constexpr char noApplicationIsFound[] = R"(
    CQanhManifestReader::MoveToElementByName(Applications) IN ... OUT(0x00000001)
    CQanhManifestReader::MoveToElementByName(Application) IN ... OUT(0x00000001)
)";

inline constexpr char displayNameIsTaken[] = R"(
    CQanhManifestReader::MoveToElementByName(VisualElements) IN ... OUT(0x00000000)
    CQanhManifestReader::GetAttributeValueByName(DisplayName) IN ... OUT(0x00000000)
)";

inline constexpr char shortNameIsTaken[] = R"(
    CQanhManifestReader::MoveToElementByName(DefaultTile) IN ... OUT(0x00000000)
    CQanhManifestReader::GetAttributeValueByName(ShortName) IN ... OUT(0x00000000)
)";

inline constexpr char anotherApplication[] =
    "CQanhManifestReader::MoveToElementByName(Application) IN ... OUT(0x00000000)";
inline constexpr char noFurtherApplication[] =
    "CQanhManifestReader::MoveToElementByName(Application) IN ... OUT(0x00000001)";

// A reference that is looked up in the resources of a package: by one address, and by another one when that
// leads nowhere. No text: nothing is found.
inline std::string TextIsSought(std::string_view reference, std::string_view fullName, std::string_view name,
                                std::string_view address, std::string_view otherAddress,
                                std::string_view text)
{
    constexpr char tried[] = R"(
        CQanhManifestReader::ConvertMsResourceToString ms-resource = @{<1>?<2>})
    )";
    return Filled(R"(
        CQanhManifestReader::ConvertMsResourceToString(<1>, <2>, <3>, , 256) IN
        <4>
        <5>
        CQanhManifestReader::ConvertMsResourceToString OUT(pStr = <6>)
    )",
                  {reference, fullName, name, Filled(tried, {fullName, address}),
                   otherAddress.empty() ? "" : Filled(tried, {fullName, otherAddress}), text});
}

inline std::string ApplicationIsAdded(std::string_view displayName, std::string_view shortName)
{
    return Filled("CQanhPackage::AddApplication(<1>, <2>) IN ... OUT(0x00000000)", {displayName, shortName});
}

} // namespace test
