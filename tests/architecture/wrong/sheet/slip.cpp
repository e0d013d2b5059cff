#include "classShared/allowed.h"
#include "analysis/forbidden.h"
#include "unplaced.h"
