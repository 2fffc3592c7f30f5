#include "lang/spell_dictionary.h"

#include <string_view>

namespace
{

struct Dictionary {
    std::string_view tag;
    const char *name;
};

// Every Spanish locale uses the dictionary of Spain; the other French,
// German, English and Dutch variants have none.
constexpr Dictionary dictionaries[] = {
    {"af", "af_ZA"},    {"ca", "ca"},       {"da", "da_DK"},    {"de-de", "de_DE"}, {"en-au", "en_AU"},
    {"en-ca", "en_CA"}, {"en-uk", "en_GB"}, {"en-us", "en_US"}, {"en-za", "en_ZA"}, {"es-ar", "es_ES"},
    {"es-bo", "es_ES"}, {"es-cl", "es_ES"}, {"es-co", "es_ES"}, {"es-cr", "es_ES"}, {"es-cu", "es_ES"},
    {"es-do", "es_ES"}, {"es-ec", "es_ES"}, {"es-es", "es_ES"}, {"es-gt", "es_ES"}, {"es-hn", "es_ES"},
    {"es-mx", "es_ES"}, {"es-ni", "es_ES"}, {"es-pa", "es_ES"}, {"es-pe", "es_ES"}, {"es-pr", "es_ES"},
    {"es-py", "es_ES"}, {"es-sv", "es_ES"}, {"es-us", "es_ES"}, {"es-uy", "es_ES"}, {"es-ve", "es_ES"},
    {"fo", "fo"},       {"fr-fr", "fr"},    {"is", "is"},       {"nl", "nl_NL"},    {"pt", "pt_PT"},
    {"pt-br", "pt_BR"}, {"sv", "sv_SE"},    {"sv-fi", "sv_FI"}, {"sw", "sw_TZ"},
};
static_assert(G_N_ELEMENTS(dictionaries) == 39);

} // namespace

const char *ov_spellcheck_get_dict_name_for_locale_tag(const char *tag)
{
    if (tag == nullptr)
        return nullptr;
    for (const Dictionary &dictionary : dictionaries)
        if (dictionary.tag == tag)
            return dictionary.name;
    return nullptr;
}
