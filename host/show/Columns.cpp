#include "host/show/Columns.h"

#include <algorithm>
#include <ostream>

namespace Host {

void Columns::add(std::string_view cell) {
  text_ += cell;
  ends_.push_back(static_cast<std::uint32_t>(text_.size()));
}

void Columns::row(std::vector<std::string> const& cells) {
  for (std::size_t i = 0; i < cells.size(); ++i) {
    widths_[i] = std::max(widths_[i], cells[i].size());
    add(cells[i]);
  }
  cells_.push_back(static_cast<std::uint8_t>(cells.size()));
}

void Columns::line(std::string_view text) {
  add(text);
  cells_.push_back(0);
}

void Columns::print(std::ostream& out) const {
  std::size_t begin = 0;
  auto end = ends_.begin();
  auto const next = [&] {
    std::string_view const cell(text_.data() + begin, *end - begin);
    begin = *end++;
    return cell;
  };
  std::string line;
  for (auto const cells : cells_) {
    line.clear();
    if (cells == 0) line = next();
    for (std::size_t i = 0; i < cells; ++i) {
      auto const cell = next();
      auto const pad = widths_[i] - cell.size();
      if (i != 0) line += "  ";
      if (align_[i] == Align::right) line.append(pad, ' ');
      line += cell;
      if (align_[i] == Align::left) line.append(pad, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
  }
}

}  // namespace Host
