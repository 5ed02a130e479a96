// Base of every tuning record that carries parameter values: each value, whatever it means, is a
// vector of int keyed by Parameter.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "model/Parameter.h"

namespace korva {

class ParameterValues {
public:
    // Declared in this order on purpose: the virtual slots are part of the exported interface.
    virtual int64_t getId() const = 0;
    virtual bool isDirty() const;
    virtual void setDirty(bool dirty);
    virtual ~ParameterValues();
    // The parameters this kind of record may hold; the translators walk this set.
    virtual const std::set<Parameter>& getValidParams() const = 0;

    ParameterValues(const ParameterValues&) = delete;
    ParameterValues& operator=(const ParameterValues&) = delete;

    // Replaces or inserts the parameter's values and marks the record changed, even when the
    // values are the same. Which parameters a record accepts is the caller's business.
    void set(Parameter parameter, std::vector<int>& values);
    void set(Parameter parameter, const std::vector<int>& values);
    // The same for values the caller no longer needs: most setters build a fresh vector per
    // element, and moving it in saves an allocation and a copy for every value of the file.
    void set(Parameter parameter, std::vector<int>&& values);

    // One "name=v1,v2,...," line per parameter in Parameter order. ieq_id is never shown: an
    // IeqPreset keeps its own number there.
    std::string valuesToString() const;

    uint64_t getCreationSerial() const { return mCreationSerial; }

    // Public record data, read directly by the reader, the translators and the store.
    int64_t id;
    bool dirty;
    std::map<Parameter, std::vector<int>> values;

protected:
    ParameterValues(int64_t id, bool dirty);

private:
    uint64_t mCreationSerial;
};

// The values a record holds for a parameter, or an empty list when it holds none. Unlike
// values[parameter] it never inserts, so it reads a const record and leaves the record as it is.
const std::vector<int>& storedValues(const ParameterValues& record, Parameter parameter);

}  // namespace korva
