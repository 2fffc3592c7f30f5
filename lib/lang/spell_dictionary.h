// Spell-check dictionary names of the locales that have one.
#pragma once

#include <glib.h>

// "es_ES" for "es-mx"; null for a locale without a dictionary ("fr-be").
const char *ov_spellcheck_get_dict_name_for_locale_tag(const char *tag);
