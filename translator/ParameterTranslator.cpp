#include "translator/ParameterTranslator.h"

#include <algorithm>
#include <bitset>
#include <typeinfo>
#include <utility>
#include <vector>

#include "observer/LoadObserver.h"

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

namespace {

// What a translator did to a record, for a load's listener: the entries it added (reading a
// parameter the record lacked) and the sources it changed, then the entries it put in the
// command. Taken only when someone listens; a translator writes nothing but its own sources.
class TranslationTrace {
public:
    TranslationTrace(LoadObserver& observer, Translator& translator, const ParameterValues& record,
                     const SetParamCommand& cmd)
        : mObserver(observer), mTranslator(translator), mRecord(record), mFirst(cmd.mCount) {
        for (const auto& entry : record.values) {
            mHeld[entry.first] = true;
        }
        for (Parameter parameter : translator.getSrcParams()) {
            auto it = record.values.find(parameter);
            if (it != record.values.end()) {
                mSources.emplace_back(parameter, it->second);
            }
        }
    }

    void report(const SetParamCommand& cmd) {
        for (const auto& [parameter, values] : mRecord.values) {
            if (!mHeld[parameter]) {
                mObserver.onValue(nullptr, mRecord, parameter, values,
                                  ValueSource::kTranslatorEmpty);
            } else if (changed(parameter, values)) {
                mObserver.onValue(nullptr, mRecord, parameter, values, ValueSource::kTranslator);
            }
        }
        mObserver.onTranslated(mTranslator, mRecord, cmd.mDeviceId, mFirst, cmd.mCount);
    }

private:
    bool changed(Parameter parameter, const std::vector<int>& values) const {
        for (const auto& [source, before] : mSources) {
            if (source == parameter) {
                return before != values;
            }
        }
        return false;
    }

    LoadObserver& mObserver;
    Translator& mTranslator;
    const ParameterValues& mRecord;
    const int mFirst;
    std::bitset<kNumParameters> mHeld;
    std::vector<std::pair<Parameter, std::vector<int>>> mSources;
};

// The translators of one record, in order; the load's listener, when there is one, hears what
// each changed in the record and which entries it added. The record is read only when there is
// a translator to run: nothing may have been set to translate.
template <typename Translators>
void translateEach(const Translators& translators, SetParamCommand& cmd, ParameterValues* record,
                   Endpoint endpoint, bool mono) {
    LoadObserver* observer = LoadObserver::current();
    for (Translator* translator : translators) {
        if constexpr (kLoadReport) {
            if (observer != nullptr) {
                TranslationTrace trace(*observer, *translator, *record, cmd);
                translator->vexTranslate(cmd, *record, endpoint, mono);
                trace.report(cmd);
                continue;
            }
        }
        translator->vexTranslate(cmd, *record, endpoint, mono);
    }
}

}  // namespace

void ParameterTranslator::translatePending(SetParamCommand& cmd) {
    translateEach(mPending, cmd, mSource, mEndpoint, mMono);
    mPending.clear();
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
    translateEach(queue, cmd, mSource, mEndpoint, mMono);
}

}  // namespace korva
