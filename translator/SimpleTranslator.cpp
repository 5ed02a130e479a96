#include "translator/SimpleTranslator.h"

namespace korva {

SimpleTranslator::SimpleTranslator(VexParameter target, Parameter source)
    : mTarget(target), mSrcParams{source} {}

std::vector<Parameter>& SimpleTranslator::getSrcParams() {
    return mSrcParams;
}

void SimpleTranslator::vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint, bool) {
    cmd.add(mTarget, {&values.values[mSrcParams[0]]});
}

}  // namespace korva
