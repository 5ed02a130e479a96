// The process-wide map from each tuning parameter to the translator that consumes it.
#pragma once

#include <map>

#include "model/Parameter.h"
#include "translator/Translator.h"

namespace korva {

class TranslatorCollection {
public:
    // Maps every source parameter of every translator in kAllTranslators; the first translator
    // to claim a parameter keeps it.
    TranslatorCollection();

    // The parameter's translator, or null for a parameter that no effect entry comes from. The
    // lookup records a null mapping for such a parameter.
    Translator* getTranslator(Parameter parameter);

    const std::map<Parameter, Translator*>& getTranslators() const { return mTranslators; }

    // Every translator, created once at static initialisation and never freed: 68 one-to-one
    // translators and 13 composite ones.
    static const TranslatorSet kAllTranslators;

private:
    std::map<Parameter, Translator*> mTranslators;
};

}  // namespace korva
