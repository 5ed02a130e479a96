// spatializer-paramtool schema: an XML Schema of the tuning files a tuning tool writes, generated
// from the tuning grammar, for editors and xmllint.
#pragma once

#include <string>

namespace korva::tool {

class SchemaCommand {
public:
    // The schema's text.
    static std::string xsd();
    static int run();
};

}  // namespace korva::tool
