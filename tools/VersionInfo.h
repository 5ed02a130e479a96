// What --version and the SARIF log say about the tool and the library it runs with. The library's
// version is read from the file the process actually loaded, so a tool run against another
// installed library says so.
#pragma once

#include <string>

namespace korva::tool {

class VersionInfo {
public:
    static std::string tool();
    // "1.0.0 (/usr/lib/.../libspatializerparamstorage.so.1.0.0)", or "unknown (PATH)".
    static std::string library();
    // The lines --version prints.
    static std::string text();
};

}  // namespace korva::tool
