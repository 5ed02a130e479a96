#include "tools/schema/TuningGrammar.h"

#include <algorithm>
#include <map>
#include <memory>
#include <set>

#include "model/Parameter.h"
#include "model/Profile.h"
#include "model/ProfileEndpoint.h"
#include "model/Tuning.h"
#include "reader/AudioOptimizerValueSetter.h"
#include "reader/GeqValueSetter.h"
#include "reader/IeqValueSetter.h"
#include "reader/MixMatrixValueSetter.h"
#include "reader/RegulatorTuningValueSetter.h"
#include "reader/RowDataValueSetter.h"
#include "reader/SetterCollection.h"
#include "reader/SimpleValueSetter.h"
#include "reader/TuningFileLayout.h"
#include "reader/VirtualBassSubgainValueSetter.h"
#include "reader/VirtualBassValueSetter.h"
#include "tools/render/BlobDecoder.h"
#include "translator/ListLayout.h"
#include "translator/SetParamCommand.h"
#include "translator/TranslatorCollection.h"

namespace korva::tool {

namespace Layout = TuningFileLayout;
using Type = GrammarAttribute::Type;

namespace {

constexpr char kProfileRecord[] = "profile";
constexpr char kEndpointRecord[] = "endpoint";
constexpr char kTuningRecord[] = "tuning";

// The entries that translating the record gives, by effect code.
std::map<std::string, std::vector<int>> translated(ParameterValues& record, Endpoint endpoint) {
    SetParamCommand command(0);
    for (Translator* translator : TranslatorCollection::kAllTranslators) {
        translator->vexTranslate(command, record, endpoint, false);
    }
    std::vector<int> words = command.mBuffer;
    words[1] = command.mCount;
    std::map<std::string, std::vector<int>> entries;
    for (const BlobEntry& entry : BlobDecoder::decode(words).entries) {
        auto& values = entries[BlobDecoder::codeText(entry.code)];
        values.insert(values.end(), entry.values.begin(), entry.values.end());
    }
    return entries;
}

// A record of each kind that holds every parameter, with a value changed or not.
std::map<std::string, std::vector<int>> translatedRecord(int kind, Endpoint endpoint, int channels,
                                                         Parameter changed, int value) {
    std::unique_ptr<ParameterValues> record;
    if (kind == 0) {
        record = std::make_unique<Profile>(0, "", true);
    } else if (kind == 1) {
        record = std::make_unique<ProfileEndpoint>(0, endpoint, 0);
    } else {
        record = std::make_unique<Tuning>("", endpoint, false);
    }
    for (int p = 0; p < kNumParameters; p++) {
        record->set(Parameter(p), std::vector<int>{1});
    }
    // An output whose per-channel lists are translated.
    record->set(OUTPUT_CHANNELS, std::vector<int>{channels});
    record->set(changed, std::vector<int>{value});
    return translated(*record, endpoint);
}

// The effect codes each parameter ends up in, measured: the entries whose values change when the
// parameter's value does, in every kind of record, for every endpoint, on stereo and four-channel
// outputs.
std::map<Parameter, std::set<std::string>> measuredCodes() {
    std::map<Parameter, std::set<std::string>> codes;
    for (int kind = 0; kind < 3; kind++) {
        for (auto [endpoint, channels] : {std::pair{ENDPOINT_SPEAKER, 2},
                                          {ENDPOINT_SPEAKER, 4},
                                          {ENDPOINT_HEADPHONE, 2},
                                          {ENDPOINT_OTHER, 2}}) {
            const auto base = translatedRecord(kind, endpoint, channels, OUTPUT_CHANNELS, channels);
            for (int p = 0; p < kNumParameters; p++) {
                for (int value : {0, 3}) {
                    const auto changed =
                        translatedRecord(kind, endpoint, channels, Parameter(p), value);
                    for (const auto& [code, values] : changed) {
                        auto was = base.find(code);
                        if (was == base.end() || was->second != values) {
                            codes[Parameter(p)].insert(code);
                        }
                    }
                }
            }
        }
    }
    return codes;
}

// The band-list column a parameter fills, where the list layouts have one.
const ListColumn* columnOf(Parameter parameter) {
    for (const BandListLayout& layout : kBandListLayouts) {
        for (int i = 0; i < layout.numColumns; i++) {
            if (layout.columns[i].source == parameter) {
                return &layout.columns[i];
            }
        }
    }
    return nullptr;
}

std::string unitOf(Parameter parameter) {
    const ListColumn* column = columnOf(parameter);
    if (column == nullptr) return "";
    switch (column->unit) {
        case ListUnit::kHz:
            return "Hz";
        case ListUnit::kSixteenthDb:
            return "1/16 dB";
        case ListUnit::kFlag:
            return "true or false";
    }
    return "";
}

class Builder {
public:
    // "ieq_target, 1/16 dB: effect iebs".
    std::string describe(Parameter parameter) const {
        std::string text = kParameterNames[parameter];
        const std::string unit = unitOf(parameter);
        if (!unit.empty()) {
            text += ", " + unit;
        }
        auto codes = mCodes.find(parameter);
        if (codes == mCodes.end()) {
            return text + ": no effect entry";
        }
        std::string list;
        for (const std::string& code : codes->second) {
            list += (list.empty() ? "" : ", ") + code;
        }
        return text + ": effect " + list;
    }

    // The parameter elements as the node table has them, in name order.
    std::vector<GrammarElement> parameters() {
        std::vector<GrammarElement> elements;
        for (ValueSetter* setter : SetterCollection::kAllValueSetters) {
            GrammarElement element{setter->getNodeName()};
            element.choice = true;
            if (parameterElement(*setter, element)) {
                elements.push_back(std::move(element));
            }
        }
        std::sort(elements.begin(), elements.end(),
                  [](const auto& a, const auto& b) { return a.name < b.name; });
        return elements;
    }

    // The preset lists: the IEQ and GEQ setters' rows below a preset's data.
    GrammarElement presetList(const char* name, const char* band,
                              const std::vector<std::string>& attributes,
                              const std::vector<Parameter>& parameters) const {
        GrammarElement list{name, "the preset's bands"};
        list.choice = true;
        list.children.push_back(rows(band, attributes, parameters));
        return list;
    }

    // The parameters each parameter element fills, by its name.
    std::map<std::string, std::vector<Parameter>> mFills;

private:
    GrammarAttribute attribute(const std::string& name, Parameter parameter, Type type) const {
        return {name, type, {}, describe(parameter)};
    }

    GrammarElement rows(const char* name, const std::vector<std::string>& attributes,
                        const std::vector<Parameter>& parameters) const {
        GrammarElement band{name, "one band"};
        band.minOccurs = 0;
        band.many = true;
        for (size_t i = 0; i < attributes.size() && i < parameters.size(); i++) {
            const ListColumn* column = columnOf(parameters[i]);
            const bool flag = column != nullptr && column->unit == ListUnit::kFlag;
            GrammarAttribute a =
                attribute(attributes[i], parameters[i], flag ? Type::kKeyword : Type::kInt);
            if (flag) {
                a.keywords = {Layout::kTrue, Layout::kFalse};
            }
            band.attributes.push_back(std::move(a));
        }
        return band;
    }

    bool parameterElement(ValueSetter& setter, GrammarElement& element) {
        if (dynamic_cast<IeqValueSetter*>(&setter) || dynamic_cast<GeqValueSetter*>(&setter)) {
            return false;  // lists of presets, not parameters of a record
        }
        std::vector<Parameter> fills;
        if (auto* single = dynamic_cast<SingleParameterSetter*>(&setter)) {
            fills = {single->getParameter()};
            element.doc = describe(single->getParameter());
            if (dynamic_cast<SimpleValueSetter*>(&setter)) {
                element.attributes.push_back(
                    attribute(Layout::kValueAttribute, single->getParameter(), Type::kScalar));
            } else if (dynamic_cast<RowDataValueSetter*>(&setter)) {
                element.attributes.push_back(
                    attribute(Layout::kValueAttribute, single->getParameter(), Type::kIntList));
            } else if (dynamic_cast<VirtualBassSubgainValueSetter*>(&setter)) {
                for (const char* name : Layout::kSubgainAttributes) {
                    element.attributes.push_back(
                        attribute(name, single->getParameter(), Type::kInt));
                }
            } else if (dynamic_cast<MixMatrixValueSetter*>(&setter)) {
                element.children.push_back(mixMatrices());
            }
        } else if (auto* multi = dynamic_cast<MultiParameterSetter*>(&setter)) {
            fills = multi->getParameters();
            for (Parameter parameter : fills) {
                element.doc += (element.doc.empty() ? "" : "; ") + describe(parameter);
            }
            if (dynamic_cast<VirtualBassValueSetter*>(&setter)) {
                for (size_t i = 0; i < fills.size(); i++) {
                    element.attributes.push_back(
                        attribute(VirtualBassValueSetter::kAttrNames[i], fills[i], Type::kInt));
                }
            } else if (dynamic_cast<AudioOptimizerValueSetter*>(&setter)) {
                element.children.push_back(
                    rows(Layout::kBand, AudioOptimizerValueSetter::kAttrNames, fills));
            } else if (dynamic_cast<RegulatorTuningValueSetter*>(&setter)) {
                element.children.push_back(
                    rows(Layout::kBand, RegulatorTuningValueSetter::kAttrNames, fills));
            }
        }
        mFills[element.name] = fills;
        return !fills.empty();
    }

    static GrammarElement mixMatrices() {
        const std::string q14 = "one input channel's shares of the left and right outputs, Q14 (" +
                                std::to_string(kQ14One) + " is 1.0)";
        GrammarElement matrices{Layout::kMixMatrices, "the mix matrices, one after another"};
        GrammarElement layout{Layout::kMatrixLayoutRow,
                              "starts a matrix: its channel layout code and coefficient count"};
        layout.attributes.push_back({Layout::kValueAttribute, Type::kIntList});
        layout.choice = true;
        matrices.children.push_back(layout);
        for (const char* channel : Layout::kMatrixChannelRows) {
            GrammarElement row{channel, q14};
            row.attributes.push_back({Layout::kValueAttribute, Type::kIntList});
            row.choice = true;
            matrices.children.push_back(row);
        }
        return matrices;
    }

    const std::map<Parameter, std::set<std::string>> mCodes = measuredCodes();
};

GrammarAttribute keyword(const char* name, std::vector<std::string> keywords, std::string doc,
                         bool required = true) {
    return {name, Type::kKeyword, std::move(keywords), std::move(doc), required};
}

GrammarElement version(const char* name, const char* doc) {
    GrammarElement element{name, doc};
    for (const char* part : Layout::kVersionAttributes) {
        element.attributes.push_back({part, Type::kInt, {}, std::string(part) + " number"});
    }
    return element;
}

GrammarElement choice(GrammarElement element) {
    element.choice = true;
    return element;
}

}  // namespace

const TuningGrammar& TuningGrammar::get() {
    static const TuningGrammar grammar;
    return grammar;
}

TuningGrammar::TuningGrammar() {
    Builder builder;
    mParameters = builder.parameters();
    const std::vector<std::string> booleans = {Layout::kTrue, Layout::kFalse};
    const std::vector<std::string> endpoints(kEndpointNames, kEndpointNames + kNumEndpoints);

    mRoot = GrammarElement(Layout::kRoot, "a spatializer tuning file");
    mRoot.children.push_back(version(Layout::kToolVersion, "the tuning tool that wrote the file"));
    mRoot.children.back().minOccurs = 0;
    mRoot.children.push_back(version(Layout::kFormatVersion, "the file's format"));

    GrammarElement settings{Layout::kGlobalSetting, "settings of every record"};
    const auto* names = Layout::kGlobalSettingAttributes;
    settings.attributes = {
        keyword(names[0], booleans, "whether tunings enable dynamic speaker optimization", false),
        {names[1], Type::kInt, {}, "the game system gain", false},
        {names[2], Type::kInt, {}, "the virtual bass type of every profile endpoint", false}};
    settings.minOccurs = 0;
    settings.many = true;
    GrammarElement technologies{Layout::kAuthorizedTechnologies, "the global settings"};
    technologies.minOccurs = 0;
    technologies.children.push_back(settings);
    mRoot.children.push_back(technologies);

    GrammarElement preset =
        choice(GrammarElement(Layout::kPreset, "an IEQ target curve or a profile's GEQ bands"));
    const auto* presetNames = Layout::kPresetAttributes;
    preset.attributes = {
        {presetNames[0], Type::kInt, {}, "the IEQ preset's number, or the GEQ preset's profile"},
        {presetNames[1], Type::kText, {}, "the IEQ preset's name", false},
        keyword(presetNames[2], {Layout::kIeqType, Layout::kGeqType}, "the kind of preset")};
    GrammarElement presetData{Layout::kData, "the preset's list"};
    presetData.children.push_back(builder.presetList(Layout::kIeqList, Layout::kIeqBand,
                                                     IeqValueSetter::kAttrNames,
                                                     {IEQ_FREQUENCY, IEQ_TARGET}));
    presetData.children.push_back(builder.presetList(
        Layout::kGeqList, Layout::kGeqBand, GeqValueSetter::kAttrNames, {GEQ_FREQUENCY, GEQ_GAIN}));
    preset.children.push_back(presetData);
    mRoot.children.push_back(preset);

    GrammarElement profile = choice(GrammarElement(Layout::kProfile, "a sound profile"));
    const auto* profileNames = Layout::kProfileAttributes;
    profile.attributes = {
        {profileNames[0], Type::kInt, {}, "the profile's number"},
        {profileNames[1], Type::kText, {}, "the profile's name"},
        keyword(profileNames[2], {Layout::kMobilityGroup}, "the profile's group", false)};
    GrammarElement endpoint =
        choice(GrammarElement(Layout::kEndpoint, "the profile's settings for one endpoint"));
    endpoint.attributes = {keyword(Layout::kEndpointAttributes[0], endpoints, "the endpoint")};
    GrammarElement include =
        choice(GrammarElement(Layout::kInclude, "selects the endpoint's IEQ preset"));
    include.attributes = {{Layout::kIncludePresetNumber, Type::kInt, {}, "the IEQ preset's number"}};
    endpoint.children.push_back(include);
    endpoint.parameterRecords = {kEndpointRecord};
    GrammarElement profileData{Layout::kData, "the profile's parameters and endpoints"};
    profileData.children.push_back(endpoint);
    profileData.parameterRecords = {kProfileRecord};
    profile.children.push_back(profileData);
    mRoot.children.push_back(profile);

    GrammarElement tuning = choice(GrammarElement(Layout::kTuning, "the tuning of an output"));
    const auto* tuningNames = Layout::kTuningAttributes;
    tuning.attributes = {{tuningNames[0], Type::kText, {}, "the tuning's name"},
                         keyword(tuningNames[1], endpoints, "the endpoint it is made for"),
                         keyword(tuningNames[2], booleans, "whether the output is mono"),
                         {tuningNames[3], Type::kInt, {}, "the device's orientation"},
                         {tuningNames[4], Type::kInt, {}, "the output's channel count"}};
    GrammarElement binding{Layout::kDeviceBinding, "a tuning device that uses this tuning"};
    binding.many = true;
    binding.attributes = {
        {Layout::kDeviceBindingAttributes[0], Type::kText, {}, "the tuning device's name"},
        keyword(
            Layout::kDeviceBindingAttributes[1],
            std::vector<std::string>(kAndroidDeviceNames, kAndroidDeviceNames + kNumAndroidDevices),
            "the output port")};
    GrammarElement tuningData{Layout::kData, "the tuning's parameters"};
    tuningData.parameterRecords = {kTuningRecord};
    tuning.children = {binding, tuningData};
    mRoot.children.push_back(tuning);

    // Which records hold each parameter element's parameters; the profile's data also holds the
    // IEQ switches that the parser hands to the profile's endpoints.
    for (const GrammarElement& parameter : mParameters) {
        std::vector<std::string> records;
        for (Parameter p : builder.mFills[parameter.name]) {
            if (Profile::kValidParams.count(p) || p == IEQ_ENABLE || p == IEQ_AMOUNT) {
                records.push_back(kProfileRecord);
            }
            if (ProfileEndpoint::kValidParams.count(p)) records.push_back(kEndpointRecord);
            if (Tuning::kValidParams.count(p)) records.push_back(kTuningRecord);
        }
        mRecordsOf.push_back(records);
    }
}

bool TuningGrammar::holds(const GrammarElement& element, const GrammarElement& parameter) const {
    const size_t index = &parameter - mParameters.data();
    if (index >= mParameters.size()) {
        return false;
    }
    for (const std::string& record : element.parameterRecords) {
        const auto& records = mRecordsOf[index];
        if (std::find(records.begin(), records.end(), record) != records.end()) {
            return true;
        }
    }
    return false;
}

std::vector<const GrammarElement*> TuningGrammar::childrenOf(const GrammarElement& element) const {
    std::vector<const GrammarElement*> children;
    for (const GrammarElement& child : element.children) {
        children.push_back(&child);
    }
    for (const GrammarElement& parameter : mParameters) {
        if (holds(element, parameter)) {
            children.push_back(&parameter);
        }
    }
    return children;
}

const GrammarElement* TuningGrammar::find(const std::vector<std::string>& path) const {
    if (path.empty() || std::find(std::begin(Layout::kRootNames), std::end(Layout::kRootNames),
                                  path[0]) == std::end(Layout::kRootNames)) {
        return nullptr;
    }
    const GrammarElement* at = &mRoot;
    for (size_t i = 1; i < path.size() && at != nullptr; i++) {
        const GrammarElement* next = nullptr;
        for (const GrammarElement* child : childrenOf(*at)) {
            if (child->name == path[i]) {
                next = child;
                break;
            }
        }
        at = next;
    }
    return at;
}

}  // namespace korva::tool
