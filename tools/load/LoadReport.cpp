#include "tools/load/LoadReport.h"

#include "model/CreationOrder.h"
#include "model/DeviceData.h"
#include "model/DeviceTuning.h"
#include "model/GeqPreset.h"
#include "model/IeqPreset.h"
#include "model/Profile.h"
#include "model/ProfileEndpoint.h"
#include "model/Tuning.h"
#include "reader/NodeInfo.h"
#include "reader/TuningFileParser.h"
#include "translator/Translator.h"

namespace korva::tool {

namespace {

template <typename T>
void addInOrder(const std::set<T*>& set, std::vector<const ParameterValues*>* out) {
    for (const T* record : inCreationOrder(set)) {
        out->push_back(record);
    }
}

}  // namespace

std::string RecordSnapshot::title() const {
    const std::string quotedName = "\"" + name + "\"";
    switch (kind) {
        case RecordKind::kProfile:
            return "profile " + std::to_string(profileId) + " " + quotedName;
        case RecordKind::kProfileEndpoint:
            return std::string(endpoint >= 0 && endpoint < kNumEndpoints ? kEndpointNames[endpoint]
                                                                         : "?") +
                   " endpoint of profile " + std::to_string(profileId);
        case RecordKind::kTuning:
            return "tuning " + quotedName;
        case RecordKind::kIeqPreset:
            return "IEQ preset " + std::to_string(presetId);
        case RecordKind::kGeqPreset:
            return "GEQ preset of profile " + std::to_string(profileId);
    }
    return "record";
}

std::vector<const RecordSnapshot*> LoadReport::ofKind(RecordKind kind) const {
    std::vector<const RecordSnapshot*> out;
    for (const RecordSnapshot& record : records) {
        if (record.kind == kind && !record.dropped) {
            out.push_back(&record);
        }
    }
    return out;
}

const ReportedNode& LoadReport::node(int index) const {
    static const ReportedNode kNone;
    return index >= 0 && static_cast<size_t>(index) < nodes.size() ? nodes[index] : kNone;
}

int LoadReport::nodeIndex(const xmlNode* node) {
    if (node == nullptr) {
        return -1;
    }
    auto known = mNodeIndex.find(node);
    if (known != mNodeIndex.end()) {
        return known->second;
    }
    // The holding elements first, so that they come before the node.
    const int parent = nodeIndex(NodeInfo::parentOf(node));
    const NodeInfo::Line line = NodeInfo::lineOf(node);
    const bool element = NodeInfo::isElement(node);
    const int index = static_cast<int>(nodes.size());
    nodes.push_back({line.line, line.atLeast, element ? NodeInfo::nameOf(node) : "", element,
                     NodeInfo::isComment(node), element ? "" : NodeInfo::contentOf(node), parent,
                     std::vector<int>()});
    if (parent >= 0) {
        nodes[parent].children.push_back(index);
    }
    if (keepDocument) {
        if (document == nullptr) {
            document.reset(NodeInfo::copyDocument(node, &mCopyOf));
        }
        auto copy = mCopyOf.find(node);
        copies.push_back(copy != mCopyOf.end() ? copy->second : nullptr);
    }
    mNodeIndex[node] = index;
    return index;
}

int LoadReport::recordIndex(const ParameterValues& record) {
    auto known = mRecordIndex.find(&record);
    if (known != mRecordIndex.end()) {
        return known->second;
    }
    records.emplace_back();
    snapshot(record, &records.back());
    mRecordIndex[&record] = static_cast<int>(records.size() - 1);
    return static_cast<int>(records.size() - 1);
}

void LoadReport::snapshot(const ParameterValues& record, RecordSnapshot* into) const {
    into->id = record.getId();
    into->values = record.values;
    into->validParams = record.getValidParams();
    if (const auto* profile = dynamic_cast<const Profile*>(&record)) {
        into->kind = RecordKind::kProfile;
        into->profileId = profile->getProfileId();
        into->name = profile->getName();
        into->mobility = profile->isMobility();
        into->selectedGeqPreset = profile->getSelectedGeqPreset();
    } else if (const auto* endpoint = dynamic_cast<const ProfileEndpoint*>(&record)) {
        into->kind = RecordKind::kProfileEndpoint;
        into->profileId = endpoint->getProfileId();
        into->endpoint = endpoint->getEndpoint();
        into->selectedIeqPreset = endpoint->getSelectedIeqPreset();
    } else if (const auto* tuning = dynamic_cast<const Tuning*>(&record)) {
        into->kind = RecordKind::kTuning;
        into->name = tuning->getName();
        into->endpoint = tuning->getEndpoint();
        into->mono = tuning->isMono();
        into->readonly = tuning->isReadonly();
    } else if (const auto* ieq = dynamic_cast<const IeqPreset*>(&record)) {
        into->kind = RecordKind::kIeqPreset;
        into->presetId = ieq->getPresetId();
        into->name = ieq->getName();
    } else if (const auto* geq = dynamic_cast<const GeqPreset*>(&record)) {
        into->kind = RecordKind::kGeqPreset;
        into->profileId = geq->getProfileId();
    }
}

BindingSnapshot LoadReport::bindingOf(const DeviceTuning& binding) const {
    auto node = mBindingNode.find(&binding);
    return {node != mBindingNode.end() ? node->second : -1, binding.getId(), binding.getDevice(),
            binding.getPort(), binding.getTuning()};
}

void LoadReport::onReadFailed(const std::string&, int, const xmlError* error) {
    readFailed = true;
    if (error != nullptr && error->message != nullptr) {
        readError = error->message;
        while (!readError.empty() && readError.back() == '\n') {
            readError.pop_back();
        }
        readErrorLine = error->line;
    }
}

void LoadReport::onRecord(const xmlNode* element, const ParameterValues& record, RecordKind kind) {
    RecordSnapshot& snapshot = records[recordIndex(record)];
    snapshot.kind = kind;
    snapshot.node = nodeIndex(element);
}

void LoadReport::onRecordDropped(const ParameterValues& record) {
    const int index = recordIndex(record);
    snapshot(record, &records[index]);
    records[index].dropped = true;
    // Its memory may hold a later record.
    mRecordIndex.erase(&record);
}

void LoadReport::onParsed(TuningFileParser& parser) {
    profileElements = parser.getNumOfProfiles();
    DeviceData* data = parser.getDeviceData();
    if (data == nullptr) {
        return;
    }
    formatVersion = data->getFormatVersion();
    toolVersion = data->getToolVersion();
    gameSystemGain = data->getOrbexGameSystemGain();
    std::vector<const ParameterValues*> ordered;
    addInOrder(data->getIeqPresets(), &ordered);
    addInOrder(data->getGeqPresets(), &ordered);
    addInOrder(data->getProfiles(), &ordered);
    addInOrder(data->getProfileEndpoints(), &ordered);
    addInOrder(data->getTunings(), &ordered);
    for (const ParameterValues* record : ordered) {
        snapshot(*record, &records[recordIndex(*record)]);
    }
    for (const DeviceTuning* binding : inCreationOrder(data->getDeviceTunings())) {
        bindings.push_back(bindingOf(*binding));
    }
}

void LoadReport::onTranslated(Translator& translator, const ParameterValues& record, int deviceId,
                              int firstEntry, int endEntry) {
    translated.push_back({recordIndex(record), static_cast<int>(blobs.size()) - 1, deviceId,
                          firstEntry, endEntry, translator.getSrcParams()});
}

void LoadReport::onPartnerMissing(MissingPartner what, const ParameterValues* record,
                                  const DeviceTuning* binding) {
    partnersMissing.push_back({what, record != nullptr ? recordIndex(*record) : -1,
                               binding != nullptr ? bindingOf(*binding) : BindingSnapshot{}});
}

void LoadReport::onBlobFiled(const BlobKey&, const std::vector<int>& words, BlobFate fate) {
    if (!blobs.empty()) {
        blobs.back().words = words;
        blobs.back().fate = fate;
    }
}

}  // namespace korva::tool
