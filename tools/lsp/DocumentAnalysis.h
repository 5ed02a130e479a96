// What the language server shows of one version of a document, made the way check makes its
// findings: the text loaded once through the library, its findings measured, and each turned
// into an LSP diagnostic at its cause, with its undo edit as a quick fix. Runs in a process of its
// own, since a process loads one tuning file once.
#pragma once

#include <functional>
#include <string>

#include "tools/render/ToolOutput.h"

namespace korva::tool {

class DocumentAnalysis {
public:
    // What the document at uri shows, in two parts handed to done as each is ready, so that the
    // findings are published before the rest is built: {"diagnostics": [Diagnostic], "actions":
    // [{"diagnostic": index, "title", "edit": TextEdit}]}, then {"hover": HoverIndex,
    // "symbols": [DocumentSymbol]}. A text the library cannot read has only the first part.
    static void run(const std::string& uri, const std::string& text,
                    const std::function<void(const Json& part)>& done);
    // The same, empty: before the first analysis, or without analysing.
    static Json empty();

    // The one TextEdit that makes text into edited: the span between their common prefix and
    // suffix, cut at whole UTF-8 sequences.
    static Json smallestEdit(const std::string& text, const std::string& edited);
};

}  // namespace korva::tool
