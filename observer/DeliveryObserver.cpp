#include "observer/DeliveryObserver.h"

namespace korva {

DeliveryObserver::~DeliveryObserver() {}

}  // namespace korva
