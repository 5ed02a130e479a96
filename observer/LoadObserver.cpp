#include "observer/LoadObserver.h"

namespace korva {

LoadObserver::~LoadObserver() {}

}  // namespace korva
