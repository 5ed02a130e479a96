// The library's account of one load of a tuning file, kept after the load as plain data: the
// nodes it reported, what it read and passed over, the records it made, the values rules wrote,
// and which record went into which blob. Registered around the store's construction, it is the
// only way the tool learns what the file means; the findings and every dump are made from it.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "model/Parameter.h"
#include "observer/LoadObserver.h"

namespace korva::tool {

// A node the library reported: where it is and what it is.
struct ReportedNode {
    long line = 0;
    bool atLeast = false;
    std::string name;  // "" for comments and texts
    bool isElement = false;
    bool isComment = false;
    std::string content;        // a comment's or text's content
    int parent = -1;            // the holding element's index, -1 for the root
    std::vector<int> children;  // the reported nodes it holds, in the order they were met
};

struct RecordSnapshot {
    RecordKind kind = RecordKind::kTuning;
    int node = -1;  // the element it was made from, -1 when not reported
    int64_t id = 0;
    int profileId = 0;  // profiles, endpoints, GEQ presets
    int presetId = 0;   // IEQ presets
    std::string name;   // profiles, tunings, IEQ presets
    Endpoint endpoint = ENDPOINT_OTHER;
    int selectedIeqPreset = 0;
    int selectedGeqPreset = 0;
    bool mobility = false;
    bool mono = false;
    bool readonly = false;
    bool dropped = false;  // deleted before the reading ended
    std::map<Parameter, std::vector<int>> values;
    std::set<Parameter> validParams;

    // "profile 1 \"movie\"", "speaker endpoint of profile 1", "tuning \"spk\"", "IEQ preset 2"...
    std::string title() const;
};

struct BindingSnapshot {
    int node = -1;
    int64_t id = 0;
    std::string device;
    std::string port;
    std::string tuning;
};

struct LoadReport : public LoadObserver {
    struct NodeEvent {
        int node;
        int what;  // Structure, Skip or the lookup's Structure, by event
        bool found = true;
    };
    struct AttributeEvent {
        int node;
        std::string name;
        std::string text;
        AttributeRead how;
    };
    struct NumberEvent {
        int node;
        std::string attribute;
        std::string text;
        std::vector<int> values;  // one value for a single number
        bool isList;
        NumberRead how;  // lists: kWhole or kPart
    };
    struct KeywordEvent {
        int node;
        std::string attribute;
        std::string text;
        int value;
        bool recognised;
    };
    struct ValueEvent {
        int node;  // -1 when no element caused it
        int record;
        Parameter parameter;
        std::vector<int> values;
        ValueSource source;
        size_t nextTranslated;  // the index the translation reported next takes
    };
    struct SetterEvent {
        int node;
        int record;
    };
    struct TranslatedEvent {
        int record;
        int blob;
        int deviceId;
        int firstEntry;
        int endEntry;
        std::vector<Parameter> sources;  // the parameters the translator consumes
    };
    struct Blob {
        bool isTuning;
        int profileId;
        std::string device;
        std::vector<int> words;
        BlobFate fate = BlobFate::kStored;
    };
    struct PartnerEvent {
        MissingPartner what;
        int record;  // -1 for none
        BindingSnapshot binding;
    };

    // The load.
    bool readFailed = false;
    std::string readError;  // libxml2's message
    long readErrorLine = 0;

    // The document and what the reader made of it, in the order it was reported.
    std::vector<ReportedNode> nodes;
    std::vector<NodeEvent> structures;
    std::vector<NodeEvent> skips;
    std::vector<NodeEvent> lookups;
    std::vector<AttributeEvent> attributes;
    std::vector<NumberEvent> numbers;
    std::vector<KeywordEvent> keywords;
    std::vector<SetterEvent> setters;
    std::vector<ValueEvent> values;

    // Records and bindings in file order; snapshots taken when the reading ended.
    std::vector<RecordSnapshot> records;
    std::vector<BindingSnapshot> bindings;
    std::string formatVersion;
    std::string toolVersion;
    int gameSystemGain = 0;
    int profileElements = 0;

    // The loader and the translators.
    std::vector<Blob> blobs;
    std::vector<TranslatedEvent> translated;
    std::vector<PartnerEvent> partnersMissing;
    std::vector<LoaderDefault> loaderDefaults;
    int speakerTuning = -1;
    std::vector<std::pair<int, std::string>> defaultSelectionsMissing;

    // Set before the load to keep a copy of the document the library read, taken while it holds
    // it, with each reported node's counterpart in the copy (copies, by node index): what the
    // findings' undo edits start from. Costs a copy of the document, so only check asks for it.
    bool keepDocument = false;
    struct DocumentFree {
        void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
    };
    std::unique_ptr<xmlDoc, DocumentFree> document;
    std::vector<xmlNode*> copies;

    // The records of a kind, in file order.
    std::vector<const RecordSnapshot*> ofKind(RecordKind kind) const;
    // The element at index, or an empty one for -1.
    const ReportedNode& node(int index) const;

    // The callbacks that only record their event.
    void onStructure(const xmlNode* node, Structure what) override {
        structures.push_back({nodeIndex(node), static_cast<int>(what)});
    }
    void onSkipped(const xmlNode* node, Skip why) override {
        skips.push_back({nodeIndex(node), static_cast<int>(why)});
    }
    void onLookup(const xmlNode* lookedAt, Structure expected, bool found) override {
        lookups.push_back({nodeIndex(lookedAt), static_cast<int>(expected), found});
    }
    void onAttribute(const xmlNode* element, const char* name, const std::string& text,
                     AttributeRead how) override {
        attributes.push_back({nodeIndex(element), name != nullptr ? name : "", text, how});
    }
    void onNumber(const xmlNode* element, const char* attribute, const std::string& text, int value,
                  NumberRead how) override {
        numbers.push_back(
            {nodeIndex(element), attribute != nullptr ? attribute : "", text, {value}, false, how});
    }
    void onNumberList(const xmlNode* element, const char* attribute, const std::string& text,
                      const std::vector<int>& list, bool whole) override {
        numbers.push_back({nodeIndex(element), attribute != nullptr ? attribute : "", text, list,
                           true, whole ? NumberRead::kWhole : NumberRead::kPart});
    }
    void onKeyword(const xmlNode* element, const char* attribute, const std::string& text,
                   int value, bool recognised) override {
        keywords.push_back(
            {nodeIndex(element), attribute != nullptr ? attribute : "", text, value, recognised});
    }
    void onDeviceTuning(const xmlNode* element, const DeviceTuning& binding) override {
        mBindingNode[&binding] = nodeIndex(element);
    }
    void onSetter(const xmlNode* element, ValueSetter&, const ParameterValues& record) override {
        setters.push_back({nodeIndex(element), recordIndex(record)});
    }
    void onValue(const xmlNode* element, const ParameterValues& record, Parameter parameter,
                 const std::vector<int>& list, ValueSource source) override {
        values.push_back(
            {nodeIndex(element), recordIndex(record), parameter, list, source, translated.size()});
    }
    void onSpeakerTuning(const DeviceTuning*, const ParameterValues* tuning) override {
        speakerTuning = tuning != nullptr ? recordIndex(*tuning) : -1;
    }
    void onLoaderDefault(LoaderDefault what) override { loaderDefaults.push_back(what); }
    void onBlobBegin(const BlobKey& blob) override {
        blobs.push_back({blob.isTuning, blob.profileId, blob.device, {}});
    }
    void onDefaultSelectionMissing(int port, const std::string& device) override {
        defaultSelectionsMissing.emplace_back(port, device);
    }

    void onReadFailed(const std::string& path, int status, const xmlError* error) override;
    void onRecord(const xmlNode* element, const ParameterValues& record, RecordKind kind) override;
    void onRecordDropped(const ParameterValues& record) override;
    void onParsed(TuningFileParser& parser) override;
    void onTranslated(Translator& translator, const ParameterValues& record, int deviceId,
                      int firstEntry, int endEntry) override;
    void onPartnerMissing(MissingPartner what, const ParameterValues* record,
                          const DeviceTuning* binding) override;
    void onBlobFiled(const BlobKey& blob, const std::vector<int>& words, BlobFate fate) override;

private:
    int nodeIndex(const xmlNode* node);
    // The record's index, snapshotting it when first met.
    int recordIndex(const ParameterValues& record);
    void snapshot(const ParameterValues& record, RecordSnapshot* into) const;
    BindingSnapshot bindingOf(const DeviceTuning& binding) const;

    std::unordered_map<const xmlNode*, int> mNodeIndex;
    std::unordered_map<const xmlNode*, xmlNode*> mCopyOf;
    std::unordered_map<const ParameterValues*, int> mRecordIndex;
    std::unordered_map<const DeviceTuning*, int> mBindingNode;
};

}  // namespace korva::tool
