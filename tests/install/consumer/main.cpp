// Links the installed library the way an effect project does and reads a built-in table size.
#include "store/SpatializerParamArray.h"
#include <cstdio>
int main() {
    auto& store = android::Singleton<korva::SpatializerParamArray>::getInstance();
    std::printf("%u\n", store.getProfileParamsSize(korva::PROFILE_COMMON));
}
