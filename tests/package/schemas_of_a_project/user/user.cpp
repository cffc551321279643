// The headers come with the libraries.
#include "First.h"
#include "TheSecond.h"

static_assert(sizeof(VELMAR::First::Part) >= sizeof(VELMAR::First::Thing), "a subtype");
