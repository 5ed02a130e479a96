#include "tools/render/Printer.h"

#include <algorithm>

#include "tools/lint/Finding.h"
#include "tools/render/HtmlWriter.h"
#include "tools/render/TextTable.h"

namespace korva::tool {

namespace {

constexpr size_t kIndentStep = 2;

class TextPrinter : public Printer {
public:
    void field(const std::string&, const std::string& label, const Json&,
               const std::string& text) override {
        if (!label.empty()) {
            mFields.addRow({label, text});
        }
    }
    void path(const std::string&, const std::string& label, const std::string& path) override {
        mFields.addPathRow({label, path});
    }
    void table(const std::string& key, const Table& table, const std::string& title) override {
        if (!title.empty()) {
            const Scope scope = object(key, title);
            return this->table(key, table, "");
        }
        endFields();
        if (table.rows.empty()) {
            return text("(none)", 0);
        }
        std::vector<std::string> headers;
        for (const Column& column : table.columns) {
            if (!column.header.empty()) {
                headers.push_back(column.header);
            }
        }
        TextTable out(headers);
        for (const std::vector<Json>& row : table.rows) {
            std::vector<std::string> cells;
            for (size_t c = 0; c < row.size() && c < table.columns.size(); c++) {
                if (!table.columns[c].header.empty()) {
                    if (table.columns[c].right) {
                        out.alignRight(cells.size());
                    }
                    cells.push_back(textOf(row[c]));
                }
            }
            out.addRow(cells);
        }
        mOut += out.render(indent());
    }
    void text(const std::string& line, size_t levels) override {
        endFields();
        // The line's own leading blanks indent it further.
        const size_t blanks = std::min(line.find_first_not_of(' '), line.size());
        const std::string first = indent() + std::string(levels * kIndentStep + blanks, ' ');
        const std::string more = first + std::string(kIndentStep, ' ');
        const size_t room = TextTable::kDefaultWidth - std::min(more.size(), size_t{40});
        bool start = true;
        for (const std::string& part : TextTable::wrap(line.substr(blanks), room)) {
            mOut += (start ? first : more) + part + "\n";
            start = false;
        }
    }
    void json(const std::string&, const Json&) override {}
    std::string render() override {
        endFields();
        return mOut;
    }

protected:
    void openPlaced(const std::string& path, long line, bool atLeast,
                    const std::string& title) override {
        open("", path + ":" + lineText({line, atLeast}) + ": " + title, false);
    }
    void open(const std::string&, const std::string& title, bool) override {
        endFields();
        mTitled.push_back(!title.empty());
        if (title.empty()) {
            return;
        }
        // Top-level sections stand apart.
        if (mDepth == 0 && !mOut.empty()) {
            mOut += "\n";
        }
        text(title, 0);
        mDepth++;
    }
    void close() override {
        endFields();
        if (mTitled.back()) {
            mDepth--;
        }
        mTitled.pop_back();
    }

private:
    std::string indent() const { return std::string(mDepth * kIndentStep, ' '); }
    // Fields in a row are one table, so that their values line up.
    void endFields() {
        if (!mFields.empty()) {
            mOut += mFields.render(indent());
        }
        mFields = TextTable({"", ""});
    }

    std::string mOut;
    size_t mDepth = 0;
    std::vector<bool> mTitled;
    TextTable mFields{{"", ""}};
};

class JsonPrinter : public Printer {
public:
    JsonPrinter() : mRoot(Json::object()), mStack{&mRoot} {}

    void field(const std::string& key, const std::string&, const Json& value,
               const std::string&) override {
        if (!key.empty()) {
            json(key, value);
        }
    }
    void path(const std::string& key, const std::string&, const std::string& path) override {
        json(key, path);
    }
    void table(const std::string& key, const Table& table, const std::string&) override {
        Json rows = Json::array();
        for (size_t r = 0; r < table.rows.size(); r++) {
            const std::vector<Json>& row = table.rows[r];
            Json item = r < table.objects.size() ? table.objects[r] : nullptr;
            const bool ofCells = item.is_null();
            for (size_t c = 0; ofCells && c < row.size() && c < table.columns.size(); c++) {
                if (!table.columns[c].key.empty() && !row[c].is_discarded()) {
                    item[table.columns[c].key] = row[c];
                }
            }
            rows.push_back(item.is_null() ? Json::object() : std::move(item));
        }
        json(key, rows);
    }
    void text(const std::string&, size_t) override {}
    void json(const std::string& key, const Json& value) override { add(key, value); }
    std::string render() override { return ToolOutput::jsonText(mRoot); }

protected:
    void openPlaced(const std::string&, long line, bool atLeast, const std::string&) override {
        open("", "", false);
        json("line", line);
        if (atLeast) {
            json("at_least", true);
        }
    }
    void open(const std::string& key, const std::string&, bool isList) override {
        mStack.push_back(&add(key, isList ? Json::array() : Json::object()));
    }
    void close() override { mStack.pop_back(); }

private:
    // Only the innermost scope grows, so the pointers to the open ones stay valid.
    Json& add(const std::string& key, Json value) {
        Json& top = *mStack.back();
        if (top.is_array()) {
            top.push_back(std::move(value));
            return top.back();
        }
        return top[key] = std::move(value);
    }

public:
    Json mRoot;

private:
    std::vector<Json*> mStack;
};

// Fields as a two-column table, tables with their headers, text as paragraphs, each object or
// list a block of its own, which the page's style may indent.
class HtmlPrinter : public Printer {
public:
    explicit HtmlPrinter(std::function<std::string(long)> lineAnchor)
        : mLineAnchor(std::move(lineAnchor)) {}

    void field(const std::string&, const std::string& label, const Json&,
               const std::string& text) override {
        if (label.empty()) {
            return;
        }
        mFields += "<tr><th>" + HtmlWriter::escape(label) + "</th><td>" + HtmlWriter::escape(text) +
                   "</td></tr>";
    }
    void path(const std::string& key, const std::string& label, const std::string& path) override {
        field(key, label, path, path);
    }
    void table(const std::string& key, const Table& table, const std::string& title) override {
        if (!title.empty()) {
            const Scope scope = object(key, title);
            return this->table(key, table, "");
        }
        if (table.rows.empty()) {
            return text("(none)", 0);
        }
        endFields();
        mOut += "<table class=\"" + HtmlWriter::escape(key) + "\"><tr>";
        for (const Column& column : table.columns) {
            mOut +=
                column.header.empty() ? "" : "<th>" + HtmlWriter::escape(column.header) + "</th>";
        }
        mOut += "</tr>\n";
        for (const std::vector<Json>& row : table.rows) {
            mOut += "<tr>";
            for (size_t c = 0; c < row.size() && c < table.columns.size(); c++) {
                const Column& column = table.columns[c];
                if (column.header.empty()) {
                    continue;
                }
                const std::string style = column.right ? "num" : column.style;
                mOut += style.empty() ? "<td>" : "<td class=\"" + style + "\">";
                mOut += column.style == "line" && row[c].is_number()
                            ? lineLink(row[c].get<long>())
                            : HtmlWriter::escape(textOf(row[c]));
                mOut += "</td>";
            }
            mOut += "</tr>\n";
        }
        mOut += "</table>\n";
    }
    void text(const std::string& line, size_t) override {
        endFields();
        mOut += "<p>" + HtmlWriter::escape(line) + "</p>\n";
    }
    void json(const std::string&, const Json&) override {}
    std::string render() override {
        endFields();
        return mOut;
    }

protected:
    void openPlaced(const std::string&, long line, bool atLeast, const std::string& title) override {
        open("", "", false);
        mOut += "<p class=\"title\">" + lineLink(line) + (atLeast ? " or later" : "") + ": " +
                HtmlWriter::escape(title) + "</p>\n";
    }
    void open(const std::string& key, const std::string& title, bool) override {
        endFields();
        mOut += key.empty() ? "<div>" : "<div class=\"" + HtmlWriter::escape(key) + "\">";
        mOut += title.empty() ? "" : "<p class=\"title\">" + HtmlWriter::escape(title) + "</p>";
        mOut += "\n";
    }
    void close() override {
        endFields();
        mOut += "</div>\n";
    }

private:
    std::string lineLink(long line) const {
        const std::string text = "line " + std::to_string(line);
        return mLineAnchor ? HtmlWriter::link(mLineAnchor(line), text) : text;
    }
    void endFields() {
        if (!mFields.empty()) {
            mOut += "<table class=\"fields\">" + mFields + "</table>\n";
        }
        mFields.clear();
    }

    std::function<std::string(long)> mLineAnchor;
    std::string mOut;
    std::string mFields;
};

}  // namespace

Printer::Scope Printer::placed(const std::string& path, long line, bool atLeast,
                               const std::string& title) {
    openPlaced(path, line, atLeast, title);
    return Scope(*this);
}

Json Printer::document(const std::function<void(Printer&)>& write) {
    JsonPrinter out;
    write(out);
    return std::move(out.mRoot);
}

std::unique_ptr<Printer> Printer::make(Format format, std::function<std::string(long)> lineAnchor) {
    switch (format) {
        case Format::kJson:
            return std::make_unique<JsonPrinter>();
        case Format::kHtml:
            return std::make_unique<HtmlPrinter>(std::move(lineAnchor));
        case Format::kText:
            break;
    }
    return std::make_unique<TextPrinter>();
}

void Printer::field(const std::string& key, const Json& value) {
    std::string label = key;
    std::replace(label.begin(), label.end(), '_', ' ');
    field(key, label, value);
}

std::string Printer::textOf(const Json& value) {
    if (value.is_string()) {
        const std::string& text = value.get_ref<const std::string&>();
        return text.empty() ? "\"\"" : text;
    }
    if (value.is_null() || value.is_discarded()) {
        return "";
    }
    if (value.is_array()) {
        std::string text;
        for (const Json& item : value) {
            text += (text.empty() ? "" : " ") + textOf(item);
        }
        return text;
    }
    return value.dump();
}

}  // namespace korva::tool
