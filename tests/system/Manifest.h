#pragma once

#include <string>

namespace test {

// A package manifest with one application. The texts are put in as they are: what XML escapes must be
// escaped.
inline std::string Manifest(const std::string& name, const std::string& version,
                            const std::string& displayName, const std::string& shortName)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<Package xmlns=\"http://schemas.microsoft.com/appx/2010/manifest\">\n"
           "  <Identity Name=\"" +
           name + "\" Publisher=\"CN=Test\" Version=\"" + version +
           "\" />\n"
           "  <Applications>\n"
           "    <Application Id=\"App\" Executable=\"app.exe\">\n"
           "      <VisualElements DisplayName=\"" +
           displayName +
           "\">\n"
           "        <DefaultTile ShortName=\"" +
           shortName +
           "\" />\n"
           "      </VisualElements>\n"
           "    </Application>\n"
           "  </Applications>\n"
           "</Package>\n";
}

} // namespace test
