// One printer per output format: a command writes its content once, through the same calls, and
// gets aligned text, one JSON document or HTML for the report from them.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tools/render/ToolOutput.h"

namespace korva::tool {

class Printer {
public:
    // A column of a table: its key in JSON, its header in text and HTML; numbers read best
    // right-aligned. A column without a key is not in JSON, one without a header only in JSON. In
    // HTML, style is the cells' class, and a "line" column's numbers, and the numbers of "line 12"
    // or "lines 304, 311" in its text, link to the file's lines.
    struct Column {
        std::string key;
        std::string header;
        bool right = false;
        std::string style = "";
    };
    struct Table {
        std::vector<Column> columns;
        std::vector<std::vector<Json>> rows;  // a discarded cell is blank, and left out of JSON
        std::vector<Json> objects = {};       // per row: what JSON has of it, when not its cells
        void addRow(std::vector<Json> cells, Json object = nullptr) {
            rows.push_back(std::move(cells));
            objects.push_back(std::move(object));
        }
    };

    // Closes the object or list it opened when it goes out of scope.
    class Scope {
    public:
        explicit Scope(Printer& printer) : mPrinter(printer) {}
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;
        ~Scope() { mPrinter.close(); }

    private:
        Printer& mPrinter;
    };

    enum class Format { kText, kJson, kHtml };
    // lineAnchor: the HTML anchor of a line of the file that the content is about.
    static std::unique_ptr<Printer> make(Format format,
                                         std::function<std::string(long)> lineAnchor = nullptr);
    static std::unique_ptr<Printer> make(bool json) {
        return make(json ? Format::kJson : Format::kText);
    }
    // What write prints, as a JSON value, for a document that another one takes in.
    static Json document(const std::function<void(Printer&)>& write);
    virtual ~Printer() = default;

    // An object under key (an item when inside a list). Text shows the title, when there is one,
    // and indents what follows it.
    [[nodiscard]] Scope object(const std::string& key, const std::string& title = "") {
        open(key, title, false);
        return Scope(*this);
    }
    [[nodiscard]] Scope list(const std::string& key, const std::string& title = "") {
        open(key, title, true);
        return Scope(*this);
    }
    // An item of a list headed by a place in a file. Text: "path:line: title"; HTML: a link to
    // the line, then the title; JSON: "line" and, for a lower bound, "at_least": true.
    [[nodiscard]] Scope placed(const std::string& path, long line, bool atLeast,
                               const std::string& title);
    // JSON: "key": value. Text: "label  value", aligned with the fields around it; the value's
    // own text unless one is given (units beside a number, a name for a code). Without a key,
    // only text and HTML show it; without a label, only JSON.
    virtual void field(const std::string& key, const std::string& label, const Json& value,
                       const std::string& text) = 0;
    void field(const std::string& key, const std::string& label, const Json& value) {
        field(key, label, value, textOf(value));
    }
    // Labelled by its key, blanks for underscores.
    void field(const std::string& key, const Json& value);
    // A path the user gave: text never wraps it, since a path split at its blanks is of no use.
    virtual void path(const std::string& key, const std::string& label, const std::string& path) = 0;
    // Text: an aligned table wrapped to 80 columns ("(none)" when empty), under its title when
    // it has one. JSON: a list of objects.
    virtual void table(const std::string& key, const Table& table,
                       const std::string& title = "") = 0;
    // Only in text (a line wrapped to 80 columns under the current indent and levels more) and in
    // HTML (a paragraph).
    virtual void text(const std::string& line, size_t levels = 0) = 0;
    // Only in JSON.
    virtual void json(const std::string& key, const Json& value) = 0;
    // What flush prints.
    virtual std::string render() = 0;
    // Everything to stdout, at once.
    void flush() { ToolOutput::print(render()); }

    // A value as text shows it: strings bare ("" when empty), lists separated by blanks.
    static std::string textOf(const Json& value);

protected:
    virtual void openPlaced(const std::string& path, long line, bool atLeast,
                            const std::string& title) = 0;
    virtual void open(const std::string& key, const std::string& title, bool isList) = 0;
    virtual void close() = 0;
};

}  // namespace korva::tool
