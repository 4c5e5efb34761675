#include "host_interfaces/array.hpp"

#include <utility>

#include "host_interfaces/filesystem.hpp"

/// A program that has values of its own brings its own host; here every value is a text.
class HostArray {
  public:
    explicit HostArray(ustring text) : m_text(std::move(text)) {}
    const ustring& Text() const { return m_text; }

  private:
    ustring m_text;
};

namespace host {

ustring TextOfArray(const HostArray& value) { return value.Text(); }

HostArray* NewTextArray(const ustring& text) { return new HostArray(text); }

void DestroyArray(HostArray* value) { delete value; }

// The interpreter has no folder of its own here: its folder is the process's.
ustring AbsolutizeByCurrentFolder(const ustring& name) {
    return fl::filesystem::absolute(fl::filesystem::make_native_form(name, true), ustring());
}

} // namespace host
