// A translation from tuning parameters to effect engine entries: reads its source parameters from
// a record and adds the matching entries to a command.
#pragma once

#include <set>
#include <vector>

#include "model/Parameter.h"
#include "model/ParameterValues.h"
#include "translator/SetParamCommand.h"

namespace korva {

class Translator {
public:
    virtual ~Translator();
    // The parameters this translator consumes.
    virtual std::vector<Parameter>& getSrcParams() = 0;
    // Reads the sources from values (inserting an empty list for a missing one) and adds
    // entries to cmd with its current device id. Of the record's values, only the sources may
    // change.
    virtual void vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                              bool mono) = 0;

    // Rank among all translators ever constructed in this process. Translators are ordered by it
    // rather than by address, so that a blob's entry order is the same on every run and machine.
    int getConstructionIndex() const { return mConstructionIndex; }

protected:
    Translator();

    // First value of a list, 0 for an empty one: a record may lack a value the tuning file
    // should have had, and that must not read past the list.
    static int firstValue(const std::vector<int>& list);

private:
    const int mConstructionIndex;
};

struct TranslatorOrder {
    bool operator()(const Translator* a, const Translator* b) const {
        return a->getConstructionIndex() < b->getConstructionIndex();
    }
};

// Translators in construction order.
using TranslatorSet = std::set<Translator*, TranslatorOrder>;

}  // namespace korva
