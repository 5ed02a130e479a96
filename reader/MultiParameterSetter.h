// Base of the setters whose element fills several parameters at once. Each subclass reads one
// attribute per parameter, named by its kAttrNames at the same position.
#pragma once

#include <libxml/tree.h>

#include <string>
#include <vector>

#include "model/Parameter.h"
#include "reader/ValueSetter.h"

namespace korva {

class MultiParameterSetter : public ValueSetter {
public:
    // The parameters filled, in the order of the subclass's kAttrNames.
    const std::vector<Parameter>& getParameters() const { return mParameters; }

protected:
    MultiParameterSetter(std::string nodeName, std::vector<Parameter> parameters);

    // Writes columns[i] into mParameters[i]; a parameter without a column gets an empty list.
    void setColumns(ParameterValues& values, TagIterator& iterator,
                    std::vector<std::vector<int>> columns);

    // Joins each attribute's values over all rows into one "v1,v2,...," text read as a list, so
    // a row with a missing or malformed value ends every list there. rowNodes, when given, are
    // the rows' elements, to report the one whose value ended a list.
    std::vector<std::vector<int>> joinedColumns(const std::vector<std::vector<std::string>>& rows,
                                                const std::vector<std::string>& attrNames,
                                                const std::vector<const xmlNode*>* rowNodes) const;

    const std::vector<Parameter> mParameters;
};

}  // namespace korva
