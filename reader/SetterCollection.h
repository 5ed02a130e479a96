// Finds the value setter of a parameter element by the element's name.
#pragma once

#include <map>
#include <set>
#include <string>

#include "reader/ValueSetter.h"

namespace korva {

class SetterCollection {
public:
    // Indexes kAllValueSetters by their element names.
    SetterCollection();
    virtual ~SetterCollection();

    SetterCollection(const SetterCollection&) = delete;
    SetterCollection& operator=(const SetterCollection&) = delete;

    // The setter registered for the element name, or null for a name that has none.
    ValueSetter* getValueSetter(std::string& name);
    ValueSetter* getValueSetter(const std::string& name) const;

    size_t size() const { return mSetters.size(); }

    // Every setter, created once at start-up and never freed; ordered by address.
    static const std::set<ValueSetter*> kAllValueSetters;

private:
    std::map<std::string, ValueSetter*> mSetters;
};

}  // namespace korva
