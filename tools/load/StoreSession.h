// Starts the process's parameter store on one tuning file the way a device starts it: system
// properties first, then the singleton, which picks, loads and keeps the file. The load is the
// only reading of the file: the library's report of it is kept beside the store. A process holds
// one store for its whole life, so this is done once per process.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "store/SpatializerParamArray.h"
#include "tools/load/LoadReport.h"

namespace korva::tool {

class StoreSession {
public:
    using Properties = std::vector<std::pair<std::string, std::string>>;

    // Null, after reporting why, when the file cannot be put where the store looks. keepText
    // keeps the bytes the store reads, for showing the file beside what it became; keepDocument
    // the report's copy of the document the library read (LoadReport::keepDocument).
    static std::unique_ptr<StoreSession> open(const std::string& tuningFile,
                                              const Properties& properties = {},
                                              bool keepText = false, bool keepDocument = false);

    SpatializerParamArray& store() const { return *mStore; }
    const LoadReport& report() const { return *mReport; }
    // The file's bytes, when open was asked to keep them.
    const std::string& text() const { return mText; }
    // False, after one line on stderr that says why with libxml2's line, when the store could
    // not read the file as XML.
    bool readable() const;

private:
    StoreSession(std::string path, SpatializerParamArray* store, std::unique_ptr<LoadReport> report)
        : mPath(std::move(path)), mStore(store), mReport(std::move(report)) {}

    std::string mPath;
    SpatializerParamArray* mStore;
    std::unique_ptr<LoadReport> mReport;
    std::string mText;
};

}  // namespace korva::tool
