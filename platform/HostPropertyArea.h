// The host stand-in's properties read the way bionic's are on a device: find a property's handle
// once, then ask its serial, which changes with every write, and read its value only when the
// serial did. A missing property has no handle; the area's serial changes whenever a property is
// added, so a reader knows when to look for it again. Values come from korva::setLocalProperty.
#pragma once

#include <cstdint>

namespace korva::host {

struct PropertyInfo;

// The property's handle, or null when it has never been set. A handle stays valid for the life
// of the process.
const PropertyInfo* propertyFind(const char* name);
// Changes whenever the property is written. Takes no lock.
uint32_t propertySerial(const PropertyInfo* info);
// Changes whenever a property is added. Takes no lock.
uint32_t propertyAreaSerial();
// Calls back with the value and the serial that belongs to that value.
void propertyRead(const PropertyInfo* info,
                  void (*callback)(void* cookie, const char* name, const char* value,
                                   uint32_t serial),
                  void* cookie);

}  // namespace korva::host
