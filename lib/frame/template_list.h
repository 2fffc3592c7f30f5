// The templates of the open workspace. This sits with the workspace rather
// than with the template file code, which must not depend on the frame.
#pragma once

#include "docs/template.h"

// Every "*.template" file of the workspace's templates folder with its
// one-line description, in the folder's listing order. Never null; empty when
// no workspace is open or the folder cannot be opened. Unreadable files are
// left out and their errors stay in the error buffer.
ov_template_list *ov_template_list_load();
