#include "bench/NullEffect.h"

namespace korva::bench {

int NullEffect::setParam(int, int, const int*, int) {
    mSetParamCalls++;
    return 0;
}

int NullEffect::getParamSize(int, int) {
    return 0;
}

int NullEffect::getParam(int, int, int*, int*) {
    return 0;
}

int NullEffect::commit(int) {
    mCommitCalls++;
    return 0;
}

}  // namespace korva::bench
