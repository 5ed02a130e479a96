// The one-to-one translation: one tuning parameter becomes one effect entry with the same values.
#pragma once

#include <vector>

#include "translator/Translator.h"
#include "translator/VexParameter.h"

namespace korva {

class SimpleTranslator : public Translator {
public:
    SimpleTranslator(VexParameter target, Parameter source);

    std::vector<Parameter>& getSrcParams() override;
    // Adds one target entry holding the source's values unchanged; endpoint and mono do not
    // matter here.
    void vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override;

    VexParameter getTarget() const { return mTarget; }

private:
    VexParameter mTarget;
    // Exactly one parameter.
    std::vector<Parameter> mSrcParams;
};

}  // namespace korva
