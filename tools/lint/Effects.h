// The effects of check's findings, measured: each finding's cause is undone in a copy of the
// document the library read, the copy is loaded through the library in a fresh process, and what
// its blobs and store state differ from the file's is the finding's effect, in diff's terms (the
// undone copy as a, the file as b). A finding that undoing another's cause clears is that cause's
// consequence, not a finding of its own.
#pragma once

#include <vector>

#include "tools/lint/Finding.h"
#include "tools/load/ChildLoads.h"
#include "tools/load/StoreSession.h"

namespace korva::tool {

class Effects {
public:
    // The loads of undone copies, started before the file's own load.
    static std::unique_ptr<ChildLoads> start();

    // Measures every finding that has an undo, folds consequences into their causes and drops
    // the causes that change nothing (kept under verbose). progress is called with the count
    // done and the count to do.
    static void measure(const StoreSession& session, ChildLoads& loads, bool verbose,
                        std::vector<Finding>* findings, void (*progress)(size_t, size_t));
    // Without measuring: drops the findings that only a measured effect makes findings.
    static void skip(std::vector<Finding>* findings);
};

}  // namespace korva::tool
