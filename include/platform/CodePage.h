// The former name of tqcAccess/CodePage.h, for programs that are built within this source tree. It is not installed.
#pragma once

#include "../tqcAccess/CodePage.h"
