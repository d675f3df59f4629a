#pragma once

#include "catalog/AppNameList.h"
#include "support/TemporaryFolder.h"
#include "support/Text.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>

namespace test {

// Writes the text to a file and loads that.
inline HRESULT LoadText(CQanhAppNameList& list, std::string_view text)
{
    const TemporaryFolder folder;
    const std::wstring path = folder / L"AppNameList.xml";
    WriteFileBytes(path, text);
    return list.Load(path.c_str());
}

// The bytes of the file that the catalogue is saved to.
inline std::string SavedText(const CQanhAppNameList& list)
{
    const TemporaryFolder folder;
    const std::wstring path = folder / L"AppNameList.xml";
    if (list.Save(path.c_str()) != S_OK) {
        throw std::runtime_error("the catalogue cannot be saved");
    }
    return ReadFileBytes(path);
}

// A whole file as the platform's writer lays it out, from the lines inside of the root. The root is never
// closed.
inline std::string Document(std::initializer_list<std::string_view> lines)
{
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<Applications>";
    for (const std::string_view line : lines) {
        text += "\r\n";
        text += line;
    }
    return text;
}

// What the catalogue is saved to without the file's frame: its records in one line.
inline std::string SavedRecords(const CQanhAppNameList& list)
{
    const std::string saved = SavedText(list);
    const std::string head = Document({});
    EXPECT_EQ(saved.substr(0, head.size()), head);
    std::string records;
    for (const std::string& line : Split(saved.substr(head.size()), "\r\n")) {
        const std::string element = line.substr(std::min(line.find('<'), line.size()));
        if (element.find("MetroApps") == std::string::npos &&
            element.find("DesktopApps") == std::string::npos) {
            records += element;
        }
    }
    return records;
}

} // namespace test
