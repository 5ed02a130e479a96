#include "translator/ParameterTranslator.h"

#include <algorithm>
#include <map>
#include <typeinfo>
#include <vector>

#include "model/LoadObserver.h"

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
    LoadObserver* observer = LoadObserver::current();
    for (Translator* translator : mPending) {
        translate(*translator, cmd, observer);
    }
    mPending.clear();
}

void ParameterTranslator::translate(Translator& translator, SetParamCommand& cmd,
                                    LoadObserver* observer) {
    if (observer == nullptr) {
        translator.vexTranslate(cmd, *mSource, mEndpoint, mMono);
    } else {
        translateObserved(translator, cmd, *observer);
    }
}

void ParameterTranslator::translateObserved(Translator& translator, SetParamCommand& cmd,
                                            LoadObserver& observer) {
    // What the translator changes in the record shows against a copy taken before it runs.
    const std::map<Parameter, std::vector<int>> before = mSource->values;
    const int first = cmd.mCount;
    translator.vexTranslate(cmd, *mSource, mEndpoint, mMono);
    for (const auto& [parameter, values] : mSource->values) {
        auto was = before.find(parameter);
        if (was == before.end()) {
            observer.onValue(nullptr, *mSource, parameter, values, ValueSource::kTranslatorEmpty);
        } else if (was->second != values) {
            observer.onValue(nullptr, *mSource, parameter, values, ValueSource::kTranslator);
        }
    }
    observer.onTranslated(translator, *mSource, cmd.mDeviceId, first, cmd.mCount);
}

void ParameterTranslator::translateAll(SetParamCommand& cmd) {
    if (typeid(*this) != typeid(ParameterTranslator)) {
        // A subclass may queue differently: let it.
        for (Parameter parameter : mSource->getValidParams()) {
            onParameterChanged(parameter);
        }
        translatePending(cmd);
        return;
    }
    // The same translators in the same order as through the queue, without a set node per
    // translator per record: gathered in one vector, put in construction order, each kept once.
    std::vector<Translator*> queue(mPending.begin(), mPending.end());
    queue.reserve(queue.size() + mSource->getValidParams().size());
    for (Parameter parameter : mSource->getValidParams()) {
        if (Translator* translator = sTranslatorCollection->getTranslator(parameter)) {
            queue.push_back(translator);
        }
    }
    std::sort(queue.begin(), queue.end(), TranslatorOrder());
    queue.erase(std::unique(queue.begin(), queue.end()), queue.end());
    mPending.clear();
    LoadObserver* observer = LoadObserver::current();
    for (Translator* translator : queue) {
        translate(*translator, cmd, observer);
    }
}

}  // namespace korva
