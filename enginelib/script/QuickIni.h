// One value out of an INI file in one pass, without building a model. Unlike the INI model, a
// key that stands twice gives its first value.
#pragma once

#include "core/CStdStr.h"

bool QuickReadIniString(const CStdStr& path, const CStdStr& section, const CStdStr& key,
                        CStdStr& value);
