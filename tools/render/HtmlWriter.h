// Builds an HTML page as text: elements opened and closed in order, text always escaped, markup
// from the tool's own writers (SVG plots) passed through as it is.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace korva::tool {

class HtmlWriter {
public:
    using Attributes = std::vector<std::pair<std::string, std::string>>;

    // Text safe in element content and in quoted attribute values.
    static std::string escape(const std::string& text);
    // <a href="#anchor">text</a>.
    static std::string link(const std::string& anchor, const std::string& text);

    void open(const std::string& tag, const Attributes& attributes = {});
    void close(const std::string& tag);
    // An element holding escaped text.
    void element(const std::string& tag, const std::string& text, const Attributes& attributes = {});
    void raw(const std::string& markup) { mOut += markup; }

    const std::string& str() const { return mOut; }

private:
    std::string mOut;
};

}  // namespace korva::tool
