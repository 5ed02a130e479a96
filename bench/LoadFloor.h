// The model work that a load of one tuning file cannot avoid, counted from the library's own
// report of that load: the records it made, the parameter values the file set in them and the
// blobs it filed. The load floor makes exactly these objects, the cheapest way, beside a parse of
// the same file.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "model/Parameter.h"

namespace korva::bench {

class LoadFloor {
public:
    // Loads the file once into the store with a counting listener registered. Empty (and
    // error() set) when the load reported no record or no blob.
    static LoadFloor count(const std::string& path);

    // Makes every record with its values and every blob with its words, then frees them, as a
    // load does with its records (the blobs a load keeps are replaced by the next load's).
    // Returns the number of words written, so that nothing can be left out.
    size_t build() const;

    size_t records() const { return mRecords.size(); }
    size_t values() const;
    size_t blobs() const { return mBlobs.size(); }
    size_t blobWords() const;
    const std::string& error() const { return mError; }

private:
    // One record's values as the file set them, in the order they were set.
    using RecordValues = std::vector<std::pair<Parameter, std::vector<int>>>;

    std::vector<RecordValues> mRecords;
    std::vector<std::vector<int>> mBlobs;
    std::string mError;
};

}  // namespace korva::bench
