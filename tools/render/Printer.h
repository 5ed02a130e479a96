// One printer per output format: a command writes its content once, through the same calls, and
// gets aligned text or one JSON document from them.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tools/render/ToolOutput.h"

namespace korva::tool {

class Printer {
public:
    // A column of a table: its key in JSON, its header in text; numbers read best right-aligned.
    struct Column {
        std::string key;
        std::string header;
        bool right = false;
    };
    struct Table {
        std::vector<Column> columns;
        std::vector<std::vector<Json>> rows;
        void addRow(std::vector<Json> cells) { rows.push_back(std::move(cells)); }
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

    static std::unique_ptr<Printer> make(bool json);
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
    // JSON: "key": value. Text: "label  value", aligned with the fields around it; the value's
    // own text unless one is given (units beside a number, a name for a code).
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
    // Only in text: a line, wrapped to 80 columns under the current indent and levels more.
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
    virtual void open(const std::string& key, const std::string& title, bool isList) = 0;
    virtual void close() = 0;
};

}  // namespace korva::tool
