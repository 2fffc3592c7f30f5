// Reading parts of other templates of the workspace into a template through
// a chain of chooser windows.
#pragma once

#include "docs/template.h"
