// Translates one record at a time into a command: collects the translators that the changed
// parameters feed, then runs each of them once.
#pragma once

#include "model/Parameter.h"
#include "model/ParameterValues.h"
#include "observer/LoadObserver.h"
#include "translator/SetParamCommand.h"
#include "translator/Translator.h"
#include "translator/TranslatorCollection.h"

namespace korva {

class ParameterTranslator {
public:
    ParameterTranslator();
    virtual ~ParameterTranslator();

    // The record to translate, its endpoint and whether its output is mono. The caller keeps
    // ownership; values must outlive the translation.
    virtual void setSource(ParameterValues* values, Endpoint endpoint, bool mono);
    // Queues the translator that consumes parameter; parameters without one are ignored.
    virtual void onParameterChanged(Parameter parameter);

    // Runs every queued translator once, in construction order, then forgets them.
    void translatePending(SetParamCommand& cmd);
    // Queues the translators of every parameter the record's type accepts, whether or not the
    // record holds it, and runs them.
    void translateAll(SetParamCommand& cmd);

    // Created during static initialisation, after TranslatorCollection::kAllTranslators.
    static TranslatorCollection* sTranslatorCollection;

private:
    TranslatorSet mPending;
    ParameterValues* mSource;
    Endpoint mEndpoint;
    bool mMono;
};

}  // namespace korva
