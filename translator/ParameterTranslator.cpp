#include "translator/ParameterTranslator.h"

namespace korva {

ParameterTranslator::ParameterTranslator()
    : mSource(nullptr), mEndpoint(ENDPOINT_SPEAKER), mMono(false) {}

ParameterTranslator::~ParameterTranslator() {}

void ParameterTranslator::setSource(ParameterValues* values, Endpoint endpoint, bool mono) {
    mSource = values;
    mEndpoint = endpoint;
    mMono = mono;
}

void ParameterTranslator::onParameterChanged(Parameter parameter) {
    Translator* translator = sTranslatorCollection->getTranslator(parameter);
    if (translator != nullptr) {
        mPending.insert(translator);
    }
}

void ParameterTranslator::translatePending(SetParamCommand& cmd) {
    for (Translator* translator : mPending) {
        translator->vexTranslate(cmd, *mSource, mEndpoint, mMono);
    }
    mPending.clear();
}

void ParameterTranslator::translateAll(SetParamCommand& cmd) {
    for (Parameter parameter : mSource->getValidParams()) {
        onParameterChanged(parameter);
    }
    translatePending(cmd);
}

}  // namespace korva
