// Base of the translators that turn a fixed group of tuning parameters into effect entries that
// are not one-to-one. Each keeps its sources in its own class's kSrcParams.
#pragma once

#include <vector>

#include "translator/Translator.h"

namespace korva {

template <typename Derived>
class CompositeTranslator : public Translator {
public:
    std::vector<Parameter>& getSrcParams() override { return Derived::kSrcParams; }
};

}  // namespace korva
