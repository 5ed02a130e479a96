// One list of ints from the element's first attribute: <bass-mbdrc-tuning value="1,2,3"/>.
#pragma once

#include <string>

#include "reader/SingleParameterSetter.h"

namespace korva {

class RowDataValueSetter : public SingleParameterSetter {
public:
    RowDataValueSetter(std::string nodeName, Parameter parameter);
    void set(ParameterValues& values, TagIterator& iterator) override;
};

}  // namespace korva
