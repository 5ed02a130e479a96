#include "translator/Translator.h"

#include <atomic>

namespace korva {

namespace {
// Constant-initialised, so it is ready for the translators created during static initialisation.
std::atomic<int> sNextConstructionIndex{0};
}  // namespace

Translator::Translator() : mConstructionIndex(sNextConstructionIndex++) {}

Translator::~Translator() {}

int Translator::firstValue(const std::vector<int>& list) {
    return list.empty() ? 0 : list[0];
}

}  // namespace korva
