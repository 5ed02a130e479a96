// A row like RowDataValueSetter's, except that an empty row is stored as [0] rather than left
// empty.
#pragma once

#include <string>

#include "reader/RowDataValueSetter.h"

namespace korva {

class DrcRowDataValueSetter : public RowDataValueSetter {
public:
    DrcRowDataValueSetter(std::string nodeName, Parameter parameter);
    void set(ParameterValues& values, TagIterator& iterator) override;
};

}  // namespace korva
