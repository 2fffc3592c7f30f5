#include "docs_gui/template_gui.h"
