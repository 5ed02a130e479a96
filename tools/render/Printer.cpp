#include "tools/render/Printer.h"

#include <algorithm>
#include <regex>

#include "tools/lint/Finding.h"
#include "tools/render/HtmlWriter.h"
#include "tools/render/TextTable.h"

namespace korva::tool {

namespace {

constexpr size_t kIndentStep = 2;

// Text and HTML lay the content out for people: fields in a row gather into one block, a table
// stands under its title, and one without rows says so.
class LaidOutPrinter : public Printer {
public:
    void field(const std::string&, const std::string& label, const Json&,
               const std::string& text) override {
        if (!label.empty()) {
            addField(label, text);
        }
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
        std::vector<const Column*> columns;
        for (const Column& column : table.columns) {
            columns.push_back(column.header.empty() ? nullptr : &column);
        }
        writeTable(key, columns, table.rows);
    }
    void json(const std::string&, const Json&) override {}
    std::string render() override {
        endFields();
        return mOut;
    }

protected:
    virtual void addField(const std::string& label, const std::string& text) = 0;
    virtual void endFields() = 0;
    // The columns as people see them (null for one only in JSON), and the rows' cells.
    virtual void writeTable(const std::string& key, const std::vector<const Column*>& columns,
                            const std::vector<std::vector<Json>>& rows) = 0;

    std::string mOut;
};

class TextPrinter : public LaidOutPrinter {
public:
    void path(const std::string&, const std::string& label, const std::string& path) override {
        mFields.addPathRow({label, path});
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

protected:
    void addField(const std::string& label, const std::string& text) override {
        mFields.addRow({label, text});
    }
    void writeTable(const std::string&, const std::vector<const Column*>& columns,
                    const std::vector<std::vector<Json>>& rows) override {
        std::vector<std::string> headers;
        for (const Column* column : columns) {
            if (column != nullptr) {
                headers.push_back(column->header);
            }
        }
        TextTable out(headers);
        for (const std::vector<Json>& row : rows) {
            std::vector<std::string> cells;
            for (size_t c = 0; c < row.size() && c < columns.size(); c++) {
                if (columns[c] != nullptr && columns[c]->right) {
                    out.alignRight(cells.size());
                }
                if (columns[c] != nullptr) {
                    cells.push_back(textOf(row[c]));
                }
            }
            out.addRow(cells);
        }
        mOut += out.render(indent());
    }
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
    // Fields in a row are one table, so that their values line up.
    void endFields() override {
        if (!mFields.empty()) {
            mOut += mFields.render(indent());
        }
        mFields = TextTable({"", ""});
    }

private:
    std::string indent() const { return std::string(mDepth * kIndentStep, ' '); }

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
class HtmlPrinter : public LaidOutPrinter {
public:
    explicit HtmlPrinter(std::function<std::string(long)> lineAnchor)
        : mLineAnchor(std::move(lineAnchor)) {}

    void path(const std::string& key, const std::string& label, const std::string& path) override {
        field(key, label, path, path);
    }
    void text(const std::string& line, size_t) override {
        endFields();
        mOut += "<p>" + HtmlWriter::escape(line) + "</p>\n";
    }

protected:
    void addField(const std::string& label, const std::string& text) override {
        mFields += "<tr><th>" + HtmlWriter::escape(label) + "</th><td>" + HtmlWriter::escape(text) +
                   "</td></tr>";
    }
    void writeTable(const std::string& key, const std::vector<const Column*>& columns,
                    const std::vector<std::vector<Json>>& rows) override {
        mOut += "<table class=\"" + HtmlWriter::escape(key) + "\"><tr>";
        for (const Column* column : columns) {
            mOut += column == nullptr ? "" : "<th>" + HtmlWriter::escape(column->header) + "</th>";
        }
        mOut += "</tr>\n";
        for (const std::vector<Json>& row : rows) {
            mOut += "<tr>";
            for (size_t c = 0; c < row.size() && c < columns.size(); c++) {
                if (columns[c] != nullptr) {
                    const std::string style = columns[c]->right ? "num" : columns[c]->style;
                    mOut += (style.empty() ? "<td>" : "<td class=\"" + style + "\">") +
                            (style == "line" ? linkedLines(row[c])
                                             : HtmlWriter::escape(textOf(row[c]))) +
                            "</td>";
                }
            }
            mOut += "</tr>\n";
        }
        mOut += "</table>\n";
    }
    void openPlaced(const std::string&, long line, bool atLeast, const std::string& title) override {
        open("", "", false);
        // The severity word a finding's or a note's title starts with, coloured by the page.
        const std::string word = title.substr(0, title.find(": "));
        const bool severity = word == severityName(Severity::kError) ||
                              word == severityName(Severity::kWarning) || word == "note";
        mOut += "<p class=\"title\">" + lineLink(line) + (atLeast ? " or later" : "") + ": " +
                (severity ? "<span class=\"" + word + "\">" + word + "</span>" +
                                HtmlWriter::escape(title.substr(word.size()))
                          : HtmlWriter::escape(title)) +
                "</p>\n";
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
    void endFields() override {
        if (!mFields.empty()) {
            mOut += "<table class=\"fields\">" + mFields + "</table>\n";
        }
        mFields.clear();
    }

private:
    std::string lineLink(long line) const {
        const std::string text = "line " + std::to_string(line);
        return mLineAnchor ? HtmlWriter::link(mLineAnchor(line), text) : text;
    }
    // A line number as a link to its line; in text, each number of "line 12" or "lines 304,
    // 311" (where an entry came from), and nothing else.
    std::string linkedLines(const Json& cell) const {
        if (cell.is_number()) {
            return lineLink(cell.get<long>());
        }
        static const std::regex kLines("lines? \\d+(, \\d+)*");
        static const std::regex kNumber("\\d+");
        const std::string text = HtmlWriter::escape(textOf(cell));
        std::string out;
        auto at = text.cbegin();
        for (std::sregex_iterator lines(text.begin(), text.end(), kLines), end;
             mLineAnchor && lines != end; ++lines) {
            for (std::sregex_iterator number((*lines)[0].first, (*lines)[0].second, kNumber);
                 number != end; ++number) {
                out += std::string(at, (*number)[0].first) +
                       HtmlWriter::link(mLineAnchor(std::stol(number->str())), number->str());
                at = (*number)[0].second;
            }
        }
        return out + std::string(at, text.cend());
    }

    std::function<std::string(long)> mLineAnchor;
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
