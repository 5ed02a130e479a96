// Finds the value setter of a parameter element by the element's name.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>

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
    // The same lookup for a name that the document holds, without making a string of it.
    ValueSetter* findValueSetter(std::string_view name) const;

    size_t size() const { return mSetters.size(); }

    // Every setter, created once at start-up and never freed; ordered by address.
    static const std::set<ValueSetter*> kAllValueSetters;

private:
    std::map<std::string, ValueSetter*> mSetters;
    // mSetters hashed by views of its keys: one lookup per parameter element of a file, and a
    // walk down the ordered map compares whole names at every level.
    std::unordered_map<std::string_view, ValueSetter*> mByName;
};

}  // namespace korva
