#include "app/editing_window.h"

#include "app/app_version.h"
#include "app/component_gui_editor_window.h"
#include "app/component_gui_metadata_editor.h"
#include "app/entry_undo.h"
#include "app/tab_menu_icon.h"
#include "app/text_sheet_editor.h"
#include "core/error.h"
#include "core/fs_utils.h"
#include "core/raii.h"
#include "docs/template.h"
#include "docs/template_io.h"
#include "docs_gui/template_gui.h"
#include "docs_gui/undo_history.h"
#include "frame/message.h"
#include "frame/window_stack.h"
#include "gui/gui.h"
#include "gui/menu.h"
#include "gui/spacifying_entry.h"
#include "widgets/langstr_label.h"
#include "widgets/langstr_window.h"

#include <string>
#include <utility>

namespace
{

constexpr int default_width = 640;
constexpr int default_height = 480;
constexpr int page_width = 300;
constexpr int page_height = 100;
constexpr int page_margin = 8;
constexpr int icon_gap = 6; // between a tab's name and its menu icon
constexpr const char *basic_data_title = "Basic data";

using TemplatePtr = ov::Owned<ov_template, ov_template_destroy>;
using LangstrPtr = ov::Owned<langstr, ov_langstr_free>;

// Everything one run of the window works on. The template is owned by
// run_editing_window, the widgets by GTK.
struct EditingState {
    const char *path;
    ov_template *tmpl;
    OvComponentGuiEditorWindow *window;
    OvComponentGuiMetadataEditor *metadata_editor;
    GtkNotebook *notebook;
    OvSpacifyingEntry *codeset_entry;
};

// The numbers the report type menu's items carry.
enum ReportTypeAction : int { ERASE = 0, MOVE_LEFT = 1, MOVE_RIGHT = 2, RENAME = 3, NO_ACTION = -1 };

void show_error_buffer()
{
    ov_message_show_error(ov_error_get());
    ov_error_clear();
}

// The language picker's shares of translated texts follow every edit, the
// name and author as they stand in their entries included.
void update_translation_stats(EditingState *self)
{
    const ov::Owned<langstr, ov_langstr_free> name(
        ov_component_gui_metadata_editor_get_name(self->metadata_editor));
    const ov::Owned<langstr, ov_langstr_free> author(
        ov_component_gui_metadata_editor_get_author(self->metadata_editor));
    const ov::Owned<OvTranslationStats, ov_translation_stats_destroy> stats(
        ov_translation_stats_get_for_template_as_edited(self->tmpl, name.get(), author.get()));
    ov_component_gui_editor_window_set_translation_stats(self->window, stats.get());
}

// The report type a page edits; null on the basic data page.
ov_template_report_type *page_report_type(GtkWidget *page)
{
    GtkWidget *editor = gtk_bin_get_child(GTK_BIN(page));
    return text_sheet_editor_get_report_type(TEXT_SHEET_EDITOR(editor));
}

OvUndoHistory *history_of(EditingState *self)
{
    return ov_component_gui_editor_window_get_undo_history(self->window);
}

// The page of the report type (the basic data page for null), or null.
GtkWidget *page_of(EditingState *self, ov_template_report_type *report_type)
{
    const int pages = gtk_notebook_get_n_pages(self->notebook);
    for (int i = 0; i < pages; ++i) {
        GtkWidget *page = gtk_notebook_get_nth_page(self->notebook, i);
        if (page_report_type(page) == report_type)
            return page;
    }
    return nullptr;
}

// The tab and the notebook's menu show the report type's name.
void show_report_type_name(EditingState *self, GtkWidget *page, const langstr *name)
{
    GtkWidget *tab = gtk_notebook_get_tab_label(self->notebook, page);
    const ov::Owned<GList, g_list_free> children(gtk_container_get_children(GTK_CONTAINER(tab)));
    for (GList *child = children.get(); child != nullptr; child = child->next)
        if (OV_IS_LANGSTR_LABEL(child->data))
            ov_langstr_label_set_content(OV_LANGSTR_LABEL(child->data), name);
    GtkWidget *menu_label = gtk_notebook_get_menu_label(self->notebook, page);
    if (OV_IS_LANGSTR_LABEL(menu_label))
        ov_langstr_label_set_content(OV_LANGSTR_LABEL(menu_label), name);
}

// After an undo or a redo: the page of the edit comes to the front and its
// sheet shows where the edit was.
void on_undo_applied(OvUndoHistory *, const OvUndoPlace *place, EditingState *self)
{
    if (!place->on_sheet && place->report_type == nullptr)
        return;
    GtkWidget *page = page_of(self, place->report_type);
    if (page == nullptr)
        return;
    gtk_notebook_set_current_page(self->notebook, gtk_notebook_page_num(self->notebook, page));
    if (place->on_sheet)
        text_sheet_editor_show_place(TEXT_SHEET_EDITOR(gtk_bin_get_child(GTK_BIN(page))), place);
}

OvUndoPlace report_type_place(ov_template_report_type *report_type)
{
    return {FALSE, report_type, nullptr, nullptr, nullptr};
}

// A report type's page put into the notebook by the edit, or taken out by
// it. While out, the step keeps the page with its tab and the report type
// unlinked from the template, and destroys both with itself.
class ReportTypePageStep : public ov::UndoStep
{
  public:
    ReportTypePageStep(std::string text, EditingState *self, GtkWidget *page, bool inserted)
        : UndoStep(std::move(text), report_type_place(page_report_type(page))), self_(self),
          report_type_(page_report_type(page)), page_(ov::ObjectRef<GtkWidget>::ref(page)),
          inserted_(inserted)
    {
        if (!inserted)
            take_out();
    }
    ~ReportTypePageStep() override
    {
        if (!out_)
            return;
        // The page's editor goes first: it must not outlive its report type.
        gtk_widget_destroy(page_.get());
        ov_template_report_type_destroy(report_type_);
    }
    void undo() override { inserted_ ? take_out() : put_back(); }
    void redo() override { inserted_ ? put_back() : take_out(); }

  private:
    void take_out()
    {
        GtkNotebook *notebook = self_->notebook;
        index_ = gtk_notebook_page_num(notebook, page_.get());
        tab_ = ov::ObjectRef<GtkWidget>::ref(gtk_notebook_get_tab_label(notebook, page_.get()));
        menu_label_ = ov::ObjectRef<GtkWidget>::ref(gtk_notebook_get_menu_label(notebook, page_.get()));
        gtk_notebook_remove_page(notebook, index_);
        ov_template_report_type_remove(report_type_);
        out_ = true;
    }
    void put_back()
    {
        gtk_notebook_insert_page_menu(self_->notebook, page_.get(), tab_.get(), menu_label_.get(), index_);
        ov_template_add_report_type(self_->tmpl, report_type_);
        tab_.reset();
        menu_label_.reset();
        out_ = false;
    }

    EditingState *self_;
    ov_template_report_type *report_type_;
    ov::ObjectRef<GtkWidget> page_, tab_, menu_label_;
    int index_ = 0;
    bool inserted_;
    bool out_ = false;
};

// A page moved from one tab position to another.
class ReportTypeMoveStep : public ov::UndoStep
{
  public:
    ReportTypeMoveStep(std::string text, EditingState *self, GtkWidget *page, int from, int to)
        : UndoStep(std::move(text), report_type_place(page_report_type(page))), self_(self), page_(page),
          from_(from), to_(to)
    {
    }
    void undo() override { gtk_notebook_reorder_child(self_->notebook, page_, from_); }
    void redo() override { gtk_notebook_reorder_child(self_->notebook, page_, to_); }

  private:
    EditingState *self_;
    GtkWidget *page_;
    int from_, to_;
};

// A report type's old name; its tab follows.
class ReportTypeRenameStep : public ov::LangstrStep
{
  public:
    ReportTypeRenameStep(EditingState *self, GtkWidget *page, langstr *old)
        : LangstrStep("Rename report type", report_type_place(page_report_type(page)),
                      &page_report_type(page)->name, old),
          self_(self), page_(page)
    {
    }
    void undo() override
    {
        LangstrStep::undo();
        show_report_type_name(self_, page_, page_report_type(page_)->name);
    }
    void redo() override
    {
        LangstrStep::redo();
        show_report_type_name(self_, page_, page_report_type(page_)->name);
    }

  private:
    EditingState *self_;
    GtkWidget *page_;
};

GtkWidget *create_page()
{
    GtkWidget *page = ov_gui_create_scrolled_window(GTK_POLICY_NEVER, GTK_POLICY_ALWAYS, GTK_SHADOW_IN);
    gtk_scrolled_window_set_overlay_scrolling(GTK_SCROLLED_WINDOW(page), FALSE);
    gtk_widget_set_size_request(page, page_width, page_height);
    ov_gui_set_surrounding_margin(page, page_margin);
    return page;
}

void on_tab_icon_clicked(GtkWidget *icon, EditingState *self);

// The tab of a report type: its name, then the menu icon.
GtkWidget *create_report_type_tab(EditingState *self, const langstr *name)
{
    GtkWidget *tab = ov_gui_create_hbox(FALSE);
    GtkWidget *label = ov_langstr_label_new(name);
    gtk_label_set_xalign(GTK_LABEL(label), 0);
    gtk_widget_set_valign(label, GTK_ALIGN_CENTER);
    ov_gui_pack_widget(GTK_BOX(tab), label, FALSE);
    GtkWidget *icon = tab_menu_icon_new();
    gtk_widget_set_valign(icon, GTK_ALIGN_CENTER);
    gtk_widget_set_margin_start(icon, icon_gap);
    ov_gui_pack_widget(GTK_BOX(tab), icon, FALSE);
    g_signal_connect(icon, "clicked", G_CALLBACK(on_tab_icon_clicked), self);
    return tab;
}

// Appends a page for the report type, or the basic data page for none.
gboolean add_notebook_page(EditingState *self, ov_template_report_type *report_type)
{
    GtkWidget *page = create_page();
    GtkWidget *tab;
    GtkWidget *menu_label;
    if (report_type != nullptr) {
        tab = create_report_type_tab(self, report_type->name);
        menu_label = ov_langstr_label_new(report_type->name);
    } else {
        tab = gtk_label_new(basic_data_title);
        menu_label = gtk_label_new(basic_data_title);
    }
    gtk_widget_show(tab);
    gtk_widget_show(menu_label);
    // Held here until the notebook takes them; dropped with them on failure.
    const auto page_ref = ov::ObjectRef<GtkWidget>::ref_sink(page);
    const auto tab_ref = ov::ObjectRef<GtkWidget>::ref_sink(tab);
    const auto menu_ref = ov::ObjectRef<GtkWidget>::ref_sink(menu_label);
    if (ov_gui_notebook_append_page(self->notebook, page, tab, menu_label) < 0)
        return FALSE;
    GtkWidget *editor = report_type != nullptr
                            ? text_sheet_editor_new_for_report_type(self->tmpl, report_type)
                            : text_sheet_editor_new_for_basic_data(self->tmpl);
    gtk_widget_show(editor);
    gtk_container_add(GTK_CONTAINER(page), editor);
    text_sheet_editor_set_undo_history(TEXT_SHEET_EDITOR(editor), history_of(self));
    return TRUE;
}

gboolean run_report_type_window(langstr **name, const char *title)
{
    return ov_langstr_window_run(0, name, nullptr, nullptr, 0, FALSE, title, "Report type", nullptr, nullptr);
}

void on_report_type_menu_item(GtkMenuItem *item, gpointer chosen)
{
    *static_cast<int *>(chosen) = GPOINTER_TO_INT(ov_gui_menu_get_item_data(GTK_WIDGET(item)));
}

// Pops up the menu of the report type on page; TRUE when it changed anything.
gboolean run_report_type_menu(EditingState *self, GtkWidget *page, ov_template_report_type *report_type)
{
    GtkNotebook *notebook = self->notebook;
    const int index = gtk_notebook_page_num(notebook, page);
    const int pages = gtk_notebook_get_n_pages(notebook);
    int chosen = NO_ACTION;
    GtkWidget *menu = gtk_menu_new();
    GtkMenuShell *shell = GTK_MENU_SHELL(menu);
    // The first report type never moves before the basic data page.
    const struct {
        const char *label;
        int number;
        bool insensitive;
    } items[] = {
        {"Rename", RENAME, false},
        {nullptr, NO_ACTION, false},
        {"Move left", MOVE_LEFT, index < 2},
        {"Move right", MOVE_RIGHT, index >= pages - 1},
        {"Erase", ERASE, false},
    };
    for (const auto &item : items) {
        if (item.label == nullptr)
            ov_gui_menu_append_separator(shell);
        else
            ov_gui_menu_append_item_with_activate_callback(shell, item.label, GINT_TO_POINTER(item.number),
                                                           item.insensitive ? 1 : 0, on_report_type_menu_item,
                                                           &chosen);
    }
    ov_gui_menu_run_and_destroy(GTK_MENU(menu), nullptr);

    switch (chosen) {
    case RENAME: {
        LangstrPtr old(ov_langstr_clone(report_type->name));
        if (!run_report_type_window(&report_type->name, "Rename the report type"))
            return FALSE;
        show_report_type_name(self, page, report_type->name);
        ov_undo_history_record(history_of(self), new ReportTypeRenameStep(self, page, old.release()));
        return TRUE;
    }
    case MOVE_LEFT:
    case MOVE_RIGHT: {
        const int to = chosen == MOVE_LEFT ? index - 1 : index + 1;
        gtk_notebook_reorder_child(notebook, page, to);
        ov_undo_history_record(
            history_of(self),
            new ReportTypeMoveStep(chosen == MOVE_LEFT ? "Move report type left" : "Move report type right",
                                   self, page, index, to));
        return TRUE;
    }
    case ERASE:
        if (!ov_message_ask_yes_no_question(FALSE, TRUE,
                                            "Do you really want to delete this entire report type?"))
            return FALSE;
        // The step takes the page out and keeps it while it can be undone.
        ov_undo_history_record(history_of(self),
                               new ReportTypePageStep("Erase report type", self, page, false));
        return TRUE;
    default:
        return FALSE;
    }
}

void on_tab_icon_clicked(GtkWidget *icon, EditingState *self)
{
    GtkWidget *tab = gtk_widget_get_parent(icon);
    const int pages = gtk_notebook_get_n_pages(self->notebook);
    for (int i = 1; i < pages; ++i) {
        GtkWidget *page = gtk_notebook_get_nth_page(self->notebook, i);
        if (gtk_notebook_get_tab_label(self->notebook, page) != tab)
            continue;
        run_report_type_menu(self, page, page_report_type(page));
        return;
    }
    ov_message_show_error("Report type menu error.");
}

// Adds the page of a report type that is already in the template, shows it
// and records the addition.
void show_new_report_type(EditingState *self, ov_template_report_type *report_type, const char *step_text)
{
    if (!add_notebook_page(self, report_type)) {
        show_error_buffer();
        return;
    }
    gtk_notebook_set_current_page(self->notebook, -1);
    ov_undo_history_record(history_of(self),
                           new ReportTypePageStep(step_text, self, page_of(self, report_type), true));
}

void on_new_clicked(GtkButton *, EditingState *self)
{
    langstr *name = nullptr;
    if (!run_report_type_window(&name, "Name the new report type"))
        return;
    const LangstrPtr owned_name(name);
    ov_template_report_type *report_type = ov_template_report_type_new(name);
    ov_template_add_report_type(self->tmpl, report_type);
    show_new_report_type(self, report_type, "New report type");
}

void on_from_template_clicked(GtkButton *, EditingState *self)
{
    if (!ov_template_gui_apply_template_to_template(OV_TEMPLATE_GUI_REPORT_TYPE, self->tmpl, nullptr, nullptr,
                                                    nullptr))
        return;
    show_new_report_type(self, self->tmpl->report_types.last(), "Report type from template");
}

// The codeset file names of the entry's text: split at commas, each piece
// trimmed, empty pieces left out.
void replace_codesets(ov_template *tmpl, const char *text)
{
    while (ov_template_codeset *codeset = tmpl->codesets.first())
        ov_template_codeset_destroy(codeset);
    if (text == nullptr)
        return;
    const ov::GStrv pieces(g_strsplit(text, ",", -1));
    for (char **piece = pieces.get(); *piece != nullptr; ++piece) {
        g_strstrip(*piece);
        if (**piece != '\0')
            ov_template_add_codeset(tmpl, ov_template_codeset_new(*piece));
    }
}

void on_save(OvComponentGuiEditorWindow *, EditingState *self)
{
    ov_template *tmpl = self->tmpl;
    if (!ov_component_gui_metadata_editor_replace_metadata(self->metadata_editor, &tmpl->name, &tmpl->author,
                                                           &tmpl->version)) {
        show_error_buffer();
        return;
    }
    if (tmpl->report_types.is_empty()) {
        ov_error_set("The template must have at least one report type.");
        show_error_buffer();
        return;
    }
    // The pages own the report types; the template takes their tab order.
    while (ov_template_report_type *report_type = tmpl->report_types.first())
        ov_template_report_type_remove(report_type);
    const int pages = gtk_notebook_get_n_pages(self->notebook);
    for (int i = 1; i < pages; ++i)
        ov_template_add_report_type(tmpl, page_report_type(gtk_notebook_get_nth_page(self->notebook, i)));

    const ov::GStr codesets(ov_spacifying_entry_get_text(self->codeset_entry));
    replace_codesets(tmpl, codesets.get());

    if (!ov_template_io_write_to_file(tmpl, self->path)) {
        show_error_buffer();
        return;
    }
    ov_component_gui_editor_window_set_file_has_been_modified(self->window, FALSE);
}

// "Add report type:" with its two buttons, at the end of the tab row.
void add_action_box(EditingState *self)
{
    const int margin = ov_gui_get_default_margin();
    GtkWidget *box = ov_gui_create_hbox(TRUE);
    ov_gui_set_margins(box, margin / 2, margin, margin / 2, 0);
    ov_gui_pack_space(GTK_BOX(box), 3 * margin, 0);
    ov_gui_pack_label(GTK_BOX(box), "Add report type:", 0, 0.5);
    g_signal_connect(ov_gui_pack_button(GTK_BOX(box), "New", FALSE), "clicked", G_CALLBACK(on_new_clicked),
                     self);
    g_signal_connect(ov_gui_pack_button(GTK_BOX(box), "From template", FALSE), "clicked",
                     G_CALLBACK(on_from_template_clicked), self);
    gtk_notebook_set_action_widget(self->notebook, box, GTK_PACK_END);
}

// The codeset file names of the template, joined by ", ".
std::string codeset_text(const ov_template *tmpl)
{
    std::string text;
    for (const ov_template_codeset *codeset : tmpl->codesets) {
        if (!text.empty())
            text += ", ";
        text += codeset->file_name;
    }
    return text;
}

void add_codeset_entry(EditingState *self, GtkBox *box)
{
    GtkWidget *frame = ov_gui_pack_frame(box, FALSE, nullptr);
    GtkWidget *inner = ov_gui_add_vbox(GTK_CONTAINER(frame), FALSE);
    ov_gui_set_default_surrounding_margin(inner);
    ov_gui_pack_input_field_label(GTK_BOX(inner), "Codeset file name(s), comma-separated", FALSE);
    GtkWidget *entry =
        ov_gui_pack_spacifying_entry(GTK_BOX(inner), FALSE, FALSE, codeset_text(self->tmpl).c_str(), FALSE);
    self->codeset_entry = OV_SPACIFYING_ENTRY(entry);
    ov_entry_undo_track_text_entry(GTK_ENTRY(entry), history_of(self), "Edit codeset file names");
}

// The template at path, or a new one when there is no such file; null after
// telling the user why it cannot be read.
ov_template *load_template(const char *path, gboolean *out_is_new)
{
    OvFileInfo info;
    if (!ov_fs_utils_get_info(path, &info)) {
        ov_error_clear();
        ov_message_show_error_utf8_printf("Something went wrong when accessing the template file:\n\n%s",
                                          path);
        return nullptr;
    }
    *out_is_new = !info.exists;
    if (!info.exists)
        return ov_template_new();
    ov_template *tmpl = ov_template_io_read_from_file(path);
    if (tmpl == nullptr) {
        ov_error_append_utf8_printf("Error when loading the template file:\n\n%s", path);
        show_error_buffer();
    }
    return tmpl;
}

} // namespace

void run_editing_window(const char *path)
{
    gboolean is_new = FALSE;
    const TemplatePtr tmpl(load_template(path, &is_new));
    if (!tmpl)
        return;
    EditingState self{path, tmpl.get(), nullptr, nullptr, nullptr, nullptr};
    GtkWidget *window = ov_component_gui_editor_window_new(ov_app_name, path, is_new);
    self.window = OV_COMPONENT_GUI_EDITOR_WINDOW(window);
    gtk_window_set_default_size(GTK_WINDOW(window), default_width, default_height);

    GtkWidget *box = ov_gui_add_vbox(
        GTK_CONTAINER(ov_component_gui_editor_window_get_contents_container(self.window)), FALSE);
    GtkWidget *metadata = ov_component_gui_pack_metadata_editor(GTK_BOX(box), "Template name");
    self.metadata_editor = OV_COMPONENT_GUI_METADATA_EDITOR(metadata);
    ov_component_gui_metadata_editor_set_author(self.metadata_editor, tmpl->author);
    ov_component_gui_metadata_editor_set_name(self.metadata_editor, tmpl->name);
    ov_component_gui_metadata_editor_set_version(self.metadata_editor, tmpl->version);
    ov_component_gui_metadata_editor_record_edits(self.metadata_editor, history_of(&self));

    self.notebook = GTK_NOTEBOOK(ov_gui_pack_notebook(GTK_BOX(box), TRUE));
    gtk_notebook_popup_enable(self.notebook);
    bool built = add_notebook_page(&self, nullptr);
    for (ov_template_report_type *report_type : tmpl->report_types)
        built = built && add_notebook_page(&self, report_type);
    if (!built) {
        gtk_widget_destroy(window);
        ov_error_append("Failed creating window.");
        show_error_buffer();
        return;
    }
    update_translation_stats(&self);
    add_action_box(&self);
    add_codeset_entry(&self, GTK_BOX(box));
    g_signal_connect(window, "save", G_CALLBACK(on_save), &self);
    g_signal_connect(ov_component_gui_editor_window_get_undo_history(self.window), "applied",
                     G_CALLBACK(on_undo_applied), &self);
    // Every edit, undo and redo changes the history.
    g_signal_connect_swapped(ov_component_gui_editor_window_get_undo_history(self.window), "changed",
                             G_CALLBACK(update_translation_stats), &self);

    ov_window_stack_run_window(GTK_WINDOW(window), OV_WINDOW_STACK_POSITION_MAXIMIZED, nullptr, nullptr,
                               nullptr);
}
