#include "tools/render/HtmlWriter.h"

#include <map>

namespace korva::tool {

std::string HtmlWriter::escape(const std::string& text) {
    static const std::map<char, std::string> kEntities = {
        {'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}, {'\'', "&#39;"}};
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        const auto entity = kEntities.find(c);
        out += entity != kEntities.end() ? entity->second : std::string(1, c);
    }
    return out;
}

std::string HtmlWriter::link(const std::string& anchor, const std::string& text) {
    return "<a href=\"#" + escape(anchor) + "\">" + escape(text) + "</a>";
}

void HtmlWriter::open(const std::string& tag, const Attributes& attributes) {
    mOut += "<" + tag;
    for (const auto& [name, value] : attributes) {
        mOut += " " + name + "=\"" + escape(value) + "\"";
    }
    mOut += ">";
}

void HtmlWriter::close(const std::string& tag) {
    mOut += "</" + tag + ">\n";
}

void HtmlWriter::element(const std::string& tag, const std::string& text,
                         const Attributes& attributes) {
    open(tag, attributes);
    mOut += escape(text);
    close(tag);
}

}  // namespace korva::tool
