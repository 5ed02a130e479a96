#include "translator/DeAmountTranslator.h"

namespace korva {

namespace {
// The engine's largest dialog enhancer amount.
constexpr int kMaxAmount = 12;
}  // namespace

void DeAmountTranslator::vexTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint,
                                      bool) {
    // Capped in a copy: the record keeps what the tuning said.
    std::vector<int> amount = values.values[DIALOG_ENHANCER_AMOUNT];
    if (!amount.empty() && amount[0] > kMaxAmount) {
        amount[0] = kMaxAmount;
    }
    cmd.add(DEA, {&amount});
}

}  // namespace korva
