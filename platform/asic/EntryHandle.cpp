#include "platform/asic/EntryHandle.h"

#include "platform/asic/Entry.h"
#include "platform/asic/Record.h"
#include "platform/asic/Store.h"

namespace Asic {

namespace {

class DontCareHandle final : public EntryHandle {
 public:
  explicit DontCareHandle(Index index) : EntryHandle(Kind::dontCare), index_(index) {}
  Index index() const { return index_; }

 private:
  Index index_;
};

}  // namespace

Index EntryHandle::dontCareIndex() const { return static_cast<DontCareHandle const*>(this)->index(); }

std::string EntryHandle::keyText() const {
  std::string text;
  if (auto const* of = record()) of->store().keyText(*of, text);
  return text;
}

std::string_view EntryHandle::tableName() const {
  auto const* of = record();
  return of ? of->store().name() : std::string_view();
}

bool sameEntry(EntryHandle::PtrConst const& a, EntryHandle::PtrConst const& b) {
  if (a == b) return true;
  if (!a || !b || a->record() != b->record()) return false;
  return a->record() || a->dontCareIndex() == b->dontCareIndex();
}

EntryHandle::PtrConst SwTableWorkaround::dontCareHandle(Index index) { return Dovel::make<DontCareHandle>(index); }

void appendHandleText(std::string& out, EntryHandle::PtrConst const& handle) {
  if (!handle) {
    out += "null";
  } else if (handle->record()) {
    out.append(handle->tableName()).append("[").append(handle->keyText()).append("]");
  } else {
    out += '#';
    Kiln::writeText(out, handle->dontCareIndex());
  }
}

std::string EntryView::key() const {
  std::string text;
  record_.store().keyText(record_, text);
  return text;
}

std::optional<Index> EntryView::row() const { return record_.strong().row(); }
EntryState EntryView::state() const { return record_.state; }
bool EntryView::removed() const { return !record_.keyed; }
void EntryView::fields(FieldVisitor& visitor) const { record_.store().showFields(record_, visitor); }

}  // namespace Asic
