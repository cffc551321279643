// Any bytes as the JSON of a file: what is accepted gives a Part 21 text of which the JSON gives the same text again, and so
// does a population of it.
#include <algorithm>

#include "ConfigControlDesign.h"
#include "Fuzzing.h"
#include "JsonFormat.h"

namespace {

std::string Part21Of(const std::string& json) {
  const velmar::File file(fmemopen(const_cast<char*>(json.data()), json.size(), "rb"));
  return velmar::ReadJson(file.get());
}

std::string JsonOf(const std::string& part21) {
  velmar::RecordTypes types("CONFIG_CONTROL_DESIGN");
  std::ostringstream json;
  velmar::WriteJson(part21, types, json);
  return json.str();
}

// What a population writes that keeps everything; empty where something cannot be written.
std::string Kept(const std::string& part21) {
  VELMAR::ExpFile file(VELMAR::STEP_AP203);
  file.KeepEverything(true);
  std::istringstream in(part21);
  file.Read(in);
  return velmar_fuzz::TextOf(file);
}

std::string OnOneLine(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), '\n'), text.end());
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  VELMAR::ConfigControlDesign::Load();
  if (size == 0) return 0;
  std::string part21;
  try {
    part21 = Part21Of(std::string(reinterpret_cast<const char*>(data), size));
  } catch (const velmar::JsonError&) {
    return 0;
  }
  const std::string json = JsonOf(part21);
  const std::string again = Part21Of(json);
  velmar_fuzz::RequireEqual(OnOneLine(again), OnOneLine(part21), "nothing of an accepted text is lost on the way to JSON and back");
  velmar_fuzz::RequireEqual(JsonOf(again), json, "the JSON of a text read from JSON is the same");

  if (velmar_fuzz::HasHighNumbers(part21)) return 0;
  const std::string kept = Kept(part21);
  if (kept.empty()) return 0;
  velmar_fuzz::RequireEqual(Kept(Part21Of(JsonOf(kept))), Kept(kept), "a population comes back from JSON");
  return 0;
}
