// Owning handles for the C libraries the system calls: GLib strings and
// errors, GObject references, libxml2 documents, libzip archives, stdio
// files, cairo objects. Each is a std::unique_ptr with a deleter, or
// ObjectRef for reference-counted GObjects.
#pragma once

#include <cairo.h>
#include <glib-object.h>
#include <glib.h>
#include <libxml/tree.h>
#include <zip.h>

#include <cstdio>
#include <memory>
#include <utility>

namespace ov
{

template <auto Fn> struct FnDeleter {
    template <class T> void operator()(T *pointer) const
    {
        if (pointer != nullptr)
            Fn(pointer);
    }
};

template <class T, auto Fn> using Owned = std::unique_ptr<T, FnDeleter<Fn>>;

using GStr = Owned<char, g_free>;
using GErrorPtr = Owned<GError, g_error_free>;
using GStrv = Owned<char *, g_strfreev>;
using GBytesPtr = Owned<GBytes, g_bytes_unref>;
using GStringPtr = std::unique_ptr<GString, decltype([](GString *s) { g_string_free(s, TRUE); })>;
using XmlDocPtr = Owned<xmlDoc, xmlFreeDoc>;
using XmlCharPtr = std::unique_ptr<xmlChar, decltype([](xmlChar *s) { xmlFree(s); })>;
using ZipArchivePtr = Owned<zip_t, zip_discard>;
using ZipFilePtr = Owned<zip_file_t, zip_fclose>;
using ZipSourcePtr = Owned<zip_source_t, zip_source_free>;
using FilePtr = Owned<FILE, fclose>;
using CairoPtr = Owned<cairo_t, cairo_destroy>;
using CairoSurfacePtr = Owned<cairo_surface_t, cairo_surface_destroy>;

// Takes ownership of a GLib-allocated string.
inline GStr gstr(char *text)
{
    return GStr(text);
}

// A strong reference to a GObject. Construction says how the reference was
// obtained: adopt an owned one, add one, or sink a floating one.
template <class T> class ObjectRef
{
  public:
    ObjectRef() = default;
    static ObjectRef adopt(T *object) { return ObjectRef(object); }
    static ObjectRef ref(T *object)
    {
        return ObjectRef(object != nullptr ? static_cast<T *>(g_object_ref(object)) : nullptr);
    }
    static ObjectRef ref_sink(T *object)
    {
        return ObjectRef(object != nullptr ? static_cast<T *>(g_object_ref_sink(object)) : nullptr);
    }

    ObjectRef(const ObjectRef &other) : object_(other.object_)
    {
        if (object_ != nullptr)
            g_object_ref(object_);
    }
    ObjectRef(ObjectRef &&other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    ObjectRef &operator=(ObjectRef other) noexcept
    {
        std::swap(object_, other.object_);
        return *this;
    }
    ~ObjectRef() { reset(); }

    void reset()
    {
        if (object_ != nullptr)
            g_object_unref(std::exchange(object_, nullptr));
    }
    T *get() const { return object_; }
    T *release() { return std::exchange(object_, nullptr); }
    T *operator->() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }

  private:
    explicit ObjectRef(T *object) : object_(object) {}
    T *object_ = nullptr;
};

// Lets a unique_ptr be filled through a C out-parameter:
//   GError *-style: g_file_get_contents(path, &text, ..., ov::out(error))
template <class Ptr> class OutPtr
{
  public:
    using Raw = typename Ptr::pointer;
    explicit OutPtr(Ptr &target) : target_(target) {}
    OutPtr(const OutPtr &) = delete;
    OutPtr &operator=(const OutPtr &) = delete;
    ~OutPtr() { target_.reset(raw_); }
    operator Raw *() { return &raw_; }

  private:
    Ptr &target_;
    Raw raw_ = nullptr;
};

template <class Ptr> OutPtr<Ptr> out(Ptr &target)
{
    return OutPtr<Ptr>(target);
}

// Restores the cairo state when the scope ends.
class CairoSaveGuard
{
  public:
    explicit CairoSaveGuard(cairo_t *cr) : cr_(cr) { cairo_save(cr_); }
    CairoSaveGuard(const CairoSaveGuard &) = delete;
    CairoSaveGuard &operator=(const CairoSaveGuard &) = delete;
    ~CairoSaveGuard() { cairo_restore(cr_); }

  private:
    cairo_t *cr_;
};

// Removes a GLib main-loop source when the scope ends, unless released.
class SourceGuard
{
  public:
    SourceGuard() = default;
    explicit SourceGuard(guint id) : id_(id) {}
    SourceGuard(const SourceGuard &) = delete;
    SourceGuard &operator=(const SourceGuard &) = delete;
    SourceGuard(SourceGuard &&other) noexcept : id_(std::exchange(other.id_, 0)) {}
    SourceGuard &operator=(SourceGuard &&other) noexcept
    {
        reset(other.release());
        return *this;
    }
    ~SourceGuard() { reset(); }
    void reset(guint id = 0)
    {
        if (id_ != 0)
            g_source_remove(id_);
        id_ = id;
    }
    guint release() { return std::exchange(id_, 0); }
    guint get() const { return id_; }

  private:
    guint id_ = 0;
};

// Disconnects a signal handler of a GObject when the scope ends or on reset,
// unless released. The object is watched through a weak pointer, which
// GObject clears on dispose, where it drops every handler: an object
// disposed (a destroyed widget) or finalised meanwhile is left alone. The
// guard stays where it was made.
class SignalGuard
{
  public:
    SignalGuard() = default;
    SignalGuard(gpointer instance, gulong id) { watch(instance, id); }
    SignalGuard(const SignalGuard &) = delete;
    SignalGuard &operator=(const SignalGuard &) = delete;
    ~SignalGuard() { reset(); }
    // Disconnects the handler held, then holds the one given.
    void reset(gpointer instance = nullptr, gulong id = 0)
    {
        if (instance_ != nullptr && id_ != 0)
            g_signal_handler_disconnect(instance_, id_);
        release();
        watch(instance, id);
    }
    gulong release()
    {
        if (instance_ != nullptr)
            g_object_remove_weak_pointer(G_OBJECT(std::exchange(instance_, nullptr)), &instance_);
        return std::exchange(id_, 0);
    }

  private:
    void watch(gpointer instance, gulong id)
    {
        instance_ = instance;
        id_ = id;
        if (instance_ != nullptr)
            g_object_add_weak_pointer(G_OBJECT(instance_), &instance_);
    }

    gpointer instance_ = nullptr;
    gulong id_ = 0;
};

} // namespace ov
