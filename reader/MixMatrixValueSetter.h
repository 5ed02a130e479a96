// A matrix spread over grandchild elements, one row element per row, stored row after row.
#pragma once

#include <string>

#include "reader/SingleParameterSetter.h"

namespace korva {

class MixMatrixValueSetter : public SingleParameterSetter {
public:
    MixMatrixValueSetter(std::string nodeName, Parameter parameter);
    void set(ParameterValues& values, TagIterator& iterator) override;
};

}  // namespace korva
