// Where each entry of a blob came from, as the library's report of the load says: the tuning
// parameters it was translated from, with the elements, lines and attribute texts they were read
// from, and every rule that supplied or changed their values on the way. Entries of the built-in
// tables name their table. Plain data, made once per load, for every view of the blobs.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tools/load/LoadReport.h"
#include "tools/render/Printer.h"
#include "tools/render/ToolOutput.h"

namespace korva::tool {

// An element whose attributes a value was read from, with the texts as they stood in the file.
struct ReadElement {
    std::string name;
    long line = 0;
    bool atLeast = false;
    // A band or matrix row that a setter read as one row of the list.
    bool row = false;
    size_t numbers = 0;  // of the last number or list the reader took from it
    std::vector<std::pair<std::string, std::string>> attributes;
    // Attributes the reader asked for that the element does not have (read as empty).
    std::vector<std::string> absent;
};

// One write of a parameter's values, in the order the load made them.
struct ValueStep {
    ValueSource source = ValueSource::kFile;
    // What supplied or changed the values; empty when the file's element did.
    std::string rule;
    // The record written, when it is not the parameter's own (the speaker tuning's mix matrix).
    std::string record;
    // The element that caused the write and those below it that were read; empty for rules.
    std::vector<ReadElement> elements;
    std::vector<int> values;
};

// A tuning parameter an entry was translated from, in the record it was translated from.
struct SourceParameter {
    Parameter parameter = Parameter(0);
    std::string name;        // as the catalogue spells it: "ieq_frequency"
    int record = -1;         // in LoadReport::records
    std::string recordName;  // RecordSnapshot::title()
    long recordLine = 0;
    std::vector<ValueStep> steps;
};

// One entry of a blob, and where it came from.
struct LoadedEntry {
    int32_t deviceId = 0;
    int32_t code = 0;
    std::vector<int> values;
    // One line: the parameters with their lines and the rules, or the built-in table. Made once
    // by whoever makes the entry, or read back from JSON (which lacks what summary() weighs).
    std::string from;
    size_t entry = 0;  // index in its blob
    // The built-in table the entry is part of; empty for blobs built from a file.
    std::string builtinTable;
    std::vector<SourceParameter> parameters;

    // The summary that from holds, made from the parameters.
    std::string summary() const;
    // The file line of the row element a list's band (or row) was read from; 0 when none.
    long rowLine(int row) const;
    // The parameters the entry was translated from, comma-separated.
    std::string parameterNames() const;
    // The source. Text: each parameter with its record, each write with its rule and values, each
    // element with its line and attribute texts. JSON: the same as objects, with the summary.
    void print(Printer& out) const;
    Json sourceJson() const;
};

class EntryProvenance {
public:
    explicit EntryProvenance(const LoadReport& report);

    // The record the load translated first into a blob, or -1: a tuning device blob's tuning.
    int blobRecord(size_t blob) const;
    // Where a record's values of some parameters came from, as one entry made of them would say.
    LoadedEntry ofRecord(int record, const std::vector<Parameter>& parameters) const;

    // Every entry of a blob of the report, in blob order.
    std::vector<LoadedEntry> ofBlob(size_t blob) const;

    // What a source of values means, for a value of the parameter.
    std::string ruleText(ValueSource source, Parameter parameter) const;

private:
    // The element that caused a write (always) and those below it that were read.
    void addRead(int node, bool caused, std::vector<ReadElement>* elements) const;
    SourceParameter sourceParameter(Parameter parameter, int record, size_t translation) const;
    void addSteps(Parameter parameter, int record, size_t translation, bool otherRecord,
                  std::vector<ValueStep>* steps) const;

    const LoadReport& mReport;
    std::map<int, ReadElement> mRead;  // the attributes read of each element, by node
    std::map<std::pair<int, Parameter>, std::vector<size_t>> mValues;
    std::map<int, std::vector<size_t>> mTranslations;  // by blob
    std::set<int> mRows;                               // nodes reported as list rows
    std::vector<int> mGlobalSettings;                  // the <global_setting> elements read
};

}  // namespace korva::tool
