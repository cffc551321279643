#include "TextTemplate.h"

#include <algorithm>
#include <stdexcept>

namespace VELMAR::Express {

std::string Fill(std::string_view text, std::initializer_list<Hole> holes) {
  if (!text.empty() && text.front() == '\n') text.remove_prefix(1);
  std::string result;
  for (;;) {
    const std::size_t begin = text.find('$');
    result += text.substr(0, begin);
    if (begin == std::string_view::npos) return result;
    const std::size_t end = text.find('$', begin + 1);
    if (end == std::string_view::npos) throw std::logic_error("a '$' without its partner");
    const std::string_view name = text.substr(begin + 1, end - begin - 1);
    const auto hole =
        std::find_if(holes.begin(), holes.end(), [&](const Hole& h) { return h.first == name; });
    if (hole == holes.end()) throw std::logic_error("nothing for the hole '" + std::string(name) + "'");
    result += hole->second;
    text.remove_prefix(end + 1);
    const bool alone = (result.empty() || result.back() == '\n') && !text.empty() && text.front() == '\n';
    if (alone && (hole->second.empty() || hole->second.back() == '\n')) text.remove_prefix(1);
  }
}

}  // namespace VELMAR::Express
