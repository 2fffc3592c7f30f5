#include "docs/codeset_io.h"

#include "core/atomic_file.h"
#include "core/error.h"
#include "core/fs_utils.h"
#include "core/natcmp.h"
#include "core/raii.h"
#include "core/util.h"
#include "core/xml.h"
#include "docs/xml_stream.h"
#include "lang/langstr_xml.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace
{

using CodesetPtr = std::unique_ptr<OvCodeset, decltype([](OvCodeset *c) { ov_codeset_destroy(c); })>;

// The codeset file is read by libxml2's SAX parser, so that no tree of the
// file is built. The outcome is that of reading the whole tree: a malformed
// file fails as XML whatever it contains; otherwise the name, author and
// version fail before the remarks, and the first failing remark counts.
class CodesetReader : public ov::XmlSaxReader
{
  public:
    explicit CodesetReader(OvCodeset *codeset) : codeset_(codeset) {}
    ~CodesetReader() override
    {
        for (OvRemark *remark : remarks_)
            ov_remark_destroy(remark);
    }

    // FALSE with the error set when the contents are not a codeset.
    bool finish()
    {
        if (!name_.finish_required(&codeset_->name, "name") || !author_.finish(&codeset_->author) ||
            !version_.finish_nonempty_compact_latin1(&codeset_->version))
            return false;
        // The remarks in code order, as ov_remark_list_add_remark_sorted
        // would link them one by one: a stable sort, since equal codes keep
        // their order there. Sorted by keys made once per code; their order
        // is that of the cascade's first and loosest test, so only ties go
        // to the whole cascade, which ends in a byte comparison: equal codes
        // end up side by side.
        std::vector<std::pair<std::string, OvRemark *>> sorted;
        sorted.reserve(remarks_.size());
        for (OvRemark *remark : remarks_)
            sorted.emplace_back(strnatzerocase_key(remark->code), remark);
        remarks_.clear();
        auto in_order = [](const auto &a, const auto &b) {
            const int keys = a.first.compare(b.first);
            return keys != 0 ? keys < 0 : ov_remark_compare_codes(a.second->code, b.second->code) < 0;
        };
        if (!std::is_sorted(sorted.begin(), sorted.end(), in_order))
            std::stable_sort(sorted.begin(), sorted.end(), in_order);
        for (const auto &[key, remark] : sorted)
            remarks_.push_back(remark);
        // Every remark read comes before the first one that failed, so a
        // duplicate among them is the earlier fault.
        const bool duplicates =
            std::adjacent_find(sorted.begin(), sorted.end(),
                               [&](const auto &a, const auto &b) { return !in_order(a, b); }) != sorted.end();
        if (duplicates || !remarks_error_.empty()) {
            ov_error_set(duplicates ? "Duplicate remark codes." : remarks_error_.c_str());
            return false;
        }
        if (remarks_.empty()) {
            ov_error_set("Missing remarks.");
            return false;
        }
        for (OvRemark *remark : remarks_)
            ov_remark_list_add_remark_last(codeset_->remarks, remark);
        remarks_.clear();
        return true;
    }

  private:
    // What an open element is, which decides what its children are.
    enum class Kind { ignored, name, author, version, remark, code, description };

    bool start_element(const xmlChar *element, const Attributes &attributes) override
    {
        const auto *name = reinterpret_cast<const char *>(element);
        Kind kind = Kind::ignored;
        if (open_.empty()) { // a child of the root
            if (std::strcmp(name, "remark") == 0) {
                // Remarks after the first failure are not read.
                if (remarks_error_.empty()) {
                    remark_.emplace();
                    kind = Kind::remark;
                }
            } else if (std::strcmp(name, "name") == 0) {
                kind = Kind::name;
            } else if (std::strcmp(name, "author") == 0) {
                kind = Kind::author;
            } else if (std::strcmp(name, "version") == 0) {
                kind = Kind::version;
            }
        } else if (open_.back() == Kind::remark) {
            if (std::strcmp(name, "code") == 0)
                kind = Kind::code;
            else if (std::strcmp(name, "description") == 0)
                kind = Kind::description;
        }
        if (kind == Kind::name || kind == Kind::author || kind == Kind::description)
            lang_ = attributes.find("lang", lang_text_);
        open_.push_back(kind);
        return kind != Kind::ignored && kind != Kind::remark;
    }

    void end_element(const std::string &text) override
    {
        const Kind kind = open_.back();
        open_.pop_back();
        switch (kind) {
        case Kind::name:
            name_.add(lang_, text);
            break;
        case Kind::author:
            author_.add(lang_, text);
            break;
        case Kind::version:
            version_.add(text);
            break;
        case Kind::code:
            remark_->add_code(text.c_str());
            break;
        case Kind::description:
            remark_->add_description(lang_, text.c_str());
            break;
        case Kind::remark:
            if (OvRemark *remark = remark_->finish(); remark != nullptr)
                remarks_.push_back(remark);
            else
                remarks_error_ = ov_error_get();
            break;
        case Kind::ignored:
            break;
        }
    }

    void end_root() override {}

    OvCodeset *codeset_;
    std::vector<Kind> open_; // the elements open inside the root
    ov::LangstrElements name_{TRUE};
    ov::LangstrElements author_{TRUE};
    ov::DistinctTextElement version_;
    std::optional<ov::RemarkElements> remark_;
    const char *lang_ = nullptr; // the "lang" attribute, held in lang_text_
    std::string lang_text_;
    std::vector<OvRemark *> remarks_;
    std::string remarks_error_;
};

bool write_codeset(FILE *stream, const OvCodeset *codeset)
{
    if (!ov_util_fprintf(stream, "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?>\n\n<codeset>\n\n"))
        return false;
    if (!ov_xml_write_langstr(stream, codeset->name, "name", 1) ||
        !ov_xml_write_langstr(stream, codeset->author, "author", 1))
        return false;
    if (codeset->version != nullptr) {
        if (!ov_util_fprintf(stream, "\t<version>") || !ov_xml_write_string(stream, codeset->version) ||
            !ov_util_fprintf(stream, "</version>\n"))
            return false;
    }
    for (const OvRemark *remark : *codeset->remarks) {
        // The code goes in as it stands, unlike every other text.
        if (!ov_util_fprintf(stream, "\n\t<remark>\n\t\t<code>%s</code>\n",
                             remark->code != nullptr ? remark->code : "") ||
            !ov_xml_write_langstr(stream, remark->description, "description", 2) ||
            !ov_util_fprintf(stream, "\t</remark>\n"))
            return false;
    }
    return ov_util_fprintf(stream, "\n</codeset>\n");
}

} // namespace

OvCodeset *ov_codeset_io_read_from_file(const char *path)
{
    g_return_val_if_fail(path != nullptr, nullptr);
    ov::XmlStreamFile file(path, "codeset");
    CodesetPtr codeset(ov_codeset_new());
    CodesetReader reader(codeset.get());
    if (!file.read(reader, "codeset"))
        return nullptr;
    if (!reader.finish()) {
        ov_error_append("Error parsing codeset file.");
        return nullptr;
    }
    return codeset.release();
}

gboolean ov_codeset_io_write_to_file(const OvCodeset *codeset, const char *path)
{
    g_return_val_if_fail(codeset != nullptr && path != nullptr, FALSE);
    return ov_atomic_file_write(
        path, [codeset](FILE *stream) { return write_codeset(stream, codeset); }, "Cannot create file.");
}
