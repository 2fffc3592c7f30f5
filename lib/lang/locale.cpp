#include "lang/locale.h"

#include <cstring>
#include <string_view>
#include <unordered_map>

#include "core/error.h"

namespace
{

// English stands first: the is-some-English test compares against it.
enum LanguageIndex {
    ENGLISH,
    AFRIKAANS,
    ALBANIAN,
    BASQUE,
    CATALAN,
    DANISH,
    DUTCH,
    FAROESE,
    FINNISH,
    FRENCH,
    GERMAN,
    ICELANDIC,
    IRISH,
    ITALIAN,
    NORWEGIAN_BOKMAL,
    NORWEGIAN_NYNORSK,
    PORTUGUESE,
    RHAETO_ROMANCE,
    SCOTS_GAELIC,
    SPANISH,
    SWAHILI,
    SWEDISH,
    UNDEFINED_LANGUAGE,
    LANGUAGE_COUNT
};

constexpr OvLanguage languages[LANGUAGE_COUNT] = {
    {"English"},
    {"Afrikaans"},
    {"Albanian"},
    {"Basque"},
    {"Catalan"},
    {"Danish"},
    {"Dutch"},
    {"Faroese"},
    {"Finnish"},
    {"French"},
    {"German"},
    {"Icelandic"},
    {"Irish"},
    {"Italian"},
    {"Norwegian Bokm\xc3\xa5l"},
    {"Norwegian Nynorsk"},
    {"Portuguese"},
    {"Rhaeto-Romance"},
    {"Scots Gaelic"},
    {"Spanish"},
    {"Swahili"},
    {"Swedish"},
    {"Undefined language"},
};

constexpr OvLocale L(LanguageIndex language, const char *territory, const char *tag)
{
    return OvLocale{&languages[language], territory, tag};
}

// The index of an entry is part of the interface (ov_locale_get_by_index).
// The plain tags "nl", "it", "pt" and "sv" carry a territory while the other
// plain tags do not, and UK English is "en-uk": both are kept on purpose.
constexpr OvLocale locales[] = {
    L(AFRIKAANS, nullptr, "af"),
    L(ALBANIAN, nullptr, "sq"),
    L(BASQUE, nullptr, "eu"),
    L(CATALAN, nullptr, "ca"),
    L(DANISH, nullptr, "da"),
    L(DUTCH, "Belgium", "nl-be"),
    L(DUTCH, "Netherlands", "nl"),
    L(ENGLISH, "Australia", "en-au"),
    L(ENGLISH, "Belize", "en-bz"),
    L(ENGLISH, "Canada", "en-ca"),
    L(ENGLISH, "Ireland", "en-ie"),
    L(ENGLISH, "Jamaica", "en-jm"),
    L(ENGLISH, "New Zeeland", "en-nz"),
    L(ENGLISH, "Philippines", "en-ph"),
    L(ENGLISH, "South Africa", "en-za"),
    L(ENGLISH, "Trinidad", "en-tt"),
    L(ENGLISH, "United Kingdom", "en-uk"),
    L(ENGLISH, "United States", "en-us"),
    L(ENGLISH, "Zimbabwe", "en-zw"),
    L(FAROESE, nullptr, "fo"),
    L(FINNISH, nullptr, "fi"),
    L(FRENCH, "Belgium", "fr-be"),
    L(FRENCH, "Canada", "fr-ca"),
    L(FRENCH, "France", "fr-fr"),
    L(FRENCH, "Luxembourg", "fr-lu"),
    L(FRENCH, "Monaco", "fr-mc"),
    L(FRENCH, "Switzerland", "fr-ch"),
    L(GERMAN, "Austria", "de-at"),
    L(GERMAN, "Germany", "de-de"),
    L(GERMAN, "Liechtenstein", "de-li"),
    L(GERMAN, "Luxembourg", "de-lu"),
    L(GERMAN, "Switzerland", "de-ch"),
    L(ICELANDIC, nullptr, "is"),
    L(IRISH, nullptr, "ga"),
    L(ITALIAN, "Italy", "it"),
    L(ITALIAN, "Switzerland", "it-ch"),
    L(NORWEGIAN_BOKMAL, nullptr, "nb"),
    L(NORWEGIAN_NYNORSK, nullptr, "nn"),
    L(PORTUGUESE, "Brazil", "pt-br"),
    L(PORTUGUESE, "Portugal", "pt"),
    L(RHAETO_ROMANCE, nullptr, "rm"),
    L(SCOTS_GAELIC, nullptr, "gd"),
    L(SPANISH, "Argentina", "es-ar"),
    L(SPANISH, "Bolivia", "es-bo"),
    L(SPANISH, "Chile", "es-cl"),
    L(SPANISH, "Colombia", "es-co"),
    L(SPANISH, "Costa Rica", "es-cr"),
    L(SPANISH, "Cuba", "es-cu"),
    L(SPANISH, "Dominican Republic", "es-do"),
    L(SPANISH, "Ecuador", "es-ec"),
    L(SPANISH, "El Salvador", "es-sv"),
    L(SPANISH, "Guatemala", "es-gt"),
    L(SPANISH, "Honduras", "es-hn"),
    L(SPANISH, "Mexico", "es-mx"),
    L(SPANISH, "Nicaragua", "es-ni"),
    L(SPANISH, "Panama", "es-pa"),
    L(SPANISH, "Paraguay", "es-py"),
    L(SPANISH, "Peru", "es-pe"),
    L(SPANISH, "Puerto Rico", "es-pr"),
    L(SPANISH, "Spain", "es-es"),
    L(SPANISH, "United States", "es-us"),
    L(SPANISH, "Uruguay", "es-uy"),
    L(SPANISH, "Venezuela", "es-ve"),
    L(SWAHILI, nullptr, "sw"),
    L(SWEDISH, "Finland", "sv-fi"),
    L(SWEDISH, "Sweden", "sv"),
};

constexpr guint locale_count = G_N_ELEMENTS(locales);
static_assert(locale_count == 66);

// Outside the counted table: not reachable by index.
constexpr OvLocale undefined_locale = L(UNDEFINED_LANGUAGE, nullptr, "");

constexpr guint index_of(std::string_view tag)
{
    guint index = 0;
    while (index < locale_count && tag != locales[index].tag)
        ++index;
    return index;
}

constexpr guint uk_english_index = index_of("en-uk");
constexpr guint swedish_swedish_index = index_of("sv");
static_assert(uk_english_index < locale_count && swedish_swedish_index < locale_count);

struct LegacyTag {
    std::string_view legacy;
    const char *tag;
};

constexpr LegacyTag legacy_tags[] = {
    {"de", "de-de"}, {"en", "en-uk"}, {"es", "es-es"}, {"fr", "fr-fr"}, {"no", "nb"},
};

} // namespace

guint ov_locale_get_count()
{
    return locale_count;
}

const OvLocale *ov_locale_get_by_index(guint index)
{
    if (index >= locale_count) {
        ov_error_set("Locale index out of bounds.");
        return nullptr;
    }
    return &locales[index];
}

const OvLocale *ov_locale_get_by_tag(const char *tag)
{
    g_return_val_if_fail(tag != nullptr, nullptr);
    // Readers look up a tag for every translation they meet.
    static const std::unordered_map<std::string_view, const OvLocale *> by_tag = [] {
        std::unordered_map<std::string_view, const OvLocale *> index;
        for (const OvLocale &locale : locales)
            index.emplace(locale.tag, &locale);
        return index;
    }();
    if (auto found = by_tag.find(tag); found != by_tag.end())
        return found->second;
    if (tag[0] == '\0')
        return &undefined_locale;
    ov_error_set("Unsupported locale tag.");
    return nullptr;
}

const OvLocale *ov_locale_get_by_legacy_tag(const char *tag)
{
    g_return_val_if_fail(tag != nullptr, nullptr);
    for (const LegacyTag &legacy : legacy_tags)
        if (legacy.legacy == tag)
            return ov_locale_get_by_tag(legacy.tag);
    return ov_locale_get_by_tag(tag);
}

const OvLocale *ov_locale_get_undefined()
{
    return &undefined_locale;
}

gboolean ov_locale_is_undefined(const OvLocale *locale)
{
    return locale == &undefined_locale;
}

const OvLocale *ov_locale_get_uk_english()
{
    return &locales[uk_english_index];
}

gboolean ov_locale_is_uk_english(const OvLocale *locale)
{
    return locale != nullptr && std::strcmp(locale->tag, "en-uk") == 0;
}

const OvLocale *ov_locale_get_swedish_swedish()
{
    return &locales[swedish_swedish_index];
}

gboolean ov_locale_is_some_english(const OvLocale *locale)
{
    return locale != nullptr && locale->language == &languages[ENGLISH];
}

const OvLanguage *ov_language_get_english()
{
    return &languages[ENGLISH];
}

int ov_locale_compare_by_language_name_and_territory(const OvLocale *a, const OvLocale *b)
{
    g_return_val_if_fail(a != nullptr && b != nullptr, 0);
    int by_language = std::strcmp(a->language->name, b->language->name);
    if (by_language != 0)
        return by_language;
    // Deliberately asymmetric: the territory-less locale sorts after the
    // ones with a territory.
    if (a->territory == nullptr)
        return b->territory == nullptr ? 0 : 1;
    if (b->territory == nullptr)
        return -1;
    return std::strcmp(a->territory, b->territory);
}

gchar *ov_locale_format_ui_string(const OvLocale *locale)
{
    g_return_val_if_fail(locale != nullptr, nullptr);
    if (locale->territory == nullptr)
        return g_strdup(locale->language->name);
    return g_strdup_printf("%s (%s)", locale->language->name, locale->territory);
}
