// Host stand-in for bionic's <sys/system_properties.h>: Debian's libcutils headers include it
// for the two size limits below, which bionic defines.
#pragma once

#define PROP_NAME_MAX 32
#define PROP_VALUE_MAX 92
