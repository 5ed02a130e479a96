// Reads one kind of parameter element of a tuning file into a record. One setter object serves
// every element of its name, in every record of every file: it keeps nothing between calls.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "model/Parameter.h"
#include "model/ParameterValues.h"
#include "reader/ReadTrace.h"
#include "reader/TagIterator.h"

namespace korva {

class ValueSetter {
public:
    virtual ~ValueSetter();
    // The element name this setter is registered under.
    virtual std::string getNodeName();
    // Reads the element under the cursor and writes its parameters into values. The cursor is
    // back on the element when this returns.
    virtual void set(ParameterValues& values, TagIterator& iterator) = 0;

    ValueSetter(const ValueSetter&) = delete;
    ValueSetter& operator=(const ValueSetter&) = delete;

protected:
    explicit ValueSetter(std::string nodeName);

    // Writes the parameter's values read from the element under the cursor.
    static void write(ParameterValues& values, TagIterator& iterator, Parameter parameter,
                      std::vector<int>&& list) {
        ReadTrace::write(iterator.currentNode(), values, parameter, std::move(list),
                         ValueSource::kFile);
    }

private:
    const std::string mNodeName;
};

}  // namespace korva
