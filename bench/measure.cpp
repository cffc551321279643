// Measures what becomes of a file as a whole, and against the least that its population can cost.
//
//   velmar_measure [--rounds=N] FILE...
//
// Each round reads the file, writes it and frees the population, in a new process; and builds the same population
// from values that were parsed before, in another new process. That is the floor: instances and values are created
// and set, and no text is looked at. Every figure is the median of the rounds.
#include <fmt/format.h>
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "BundledSchemas.h"
#include "ExpFile.h"
#include "ExpRuntimeRegistry.h"
#include "ExpUtilities.h"

namespace {

using VELMAR::ExpAttribute;
using VELMAR::ExpEntity;
using VELMAR::ExpFile;

// ------------------------------------------------------------------------------------------------------- the floor

// The values of a population, in the order in which the population is built of them.
class Recipe : private VELMAR::ExpAttributeVisitor {
 public:
  Recipe() = default;
  explicit Recipe(ExpFile& file) : schema_(file.GetEnforcedFactoryName()) {
    for (int number = 0, end = file.GetMaxEntityNumber(); number <= end; ++number) {
      ExpEntity* entity = file.GetEntity(number);
      if (entity == nullptr) continue;
      if (auto* complex = dynamic_cast<VELMAR::ExpExternalMappingEntity*>(entity)) {
        Note(kComplex).number = static_cast<int>(complex->GetEntities()->size());
        for (ExpEntity* part : *complex->GetEntities()) NoteInstance(*part, part->GetExternalMappingStartIndex());
      } else {
        NoteInstance(*entity, 0);
      }
      Note(kNumber).number = number;
      ++instances_;
    }
  }

  std::size_t Instances() const { return instances_; }

  // As bytes, for another process with the same types at the same addresses.
  void Save(std::ostream& out) const {
    for (const std::size_t count : {instances_, steps_.size(), texts_.size()}) {
      out.write(reinterpret_cast<const char*>(&count), sizeof count);
    }
    out.write(reinterpret_cast<const char*>(steps_.data()), Bytes(steps_.size()));
    for (const std::string& text : texts_) out.write(text.c_str(), static_cast<std::streamsize>(text.size()) + 1);
  }
  void Load(std::istream& in) {
    std::size_t steps = 0;
    std::size_t texts = 0;
    for (std::size_t* count : {&instances_, &steps, &texts}) in.read(reinterpret_cast<char*>(count), sizeof *count);
    steps_.resize(steps);
    in.read(reinterpret_cast<char*>(steps_.data()), Bytes(steps));
    texts_.resize(texts);
    for (std::string& text : texts_) std::getline(in, text, '\0');
    if (!in) throw std::runtime_error("the values cannot be kept");
  }

  void Build(ExpFile& file) {
    next_ = steps_.data();
    for (std::size_t i = 0; i < instances_; ++i) {
      ExpEntity* entity = nullptr;
      if (next_->kind == kComplex) {
        auto* complex = static_cast<VELMAR::ExpExternalMappingEntity*>(file.CreateEntity("ExpExternalMappingEntity"));
        for (int parts = (next_++)->number; parts > 0; --parts) complex->AddEntity(BuildInstance(file));
        entity = complex;
      } else {
        entity = BuildInstance(file);
      }
      const int number = (next_++)->number;
      entity->SetEntityNumber(number);
      file.AddEntity(number, entity);
    }
  }

 private:
  enum Kind { kComplex, kType, kNumber, kUnset, kReal, kInteger, kLink, kText, kEnumeration, kSelect, kList };
  enum Flags { kNotProvided = 1, kOmitted = 2 };
  struct Step {
    Kind kind;
    union {
      int number;  // of an instance, a member, a reference; how many parts, elements, names; the flags of no value
      double real;
      std::size_t text;
      VELMAR::ExpEntityRuntimeType* type;
    };
  };

  static std::streamsize Bytes(std::size_t steps) { return static_cast<std::streamsize>(steps * sizeof(Step)); }

  Step& Note(Kind kind) {
    steps_.push_back({kind, {0}});
    return steps_.back();
  }
  void NoteText(Kind kind, const std::string& text) {
    Note(kind).text = texts_.size();
    texts_.push_back(text);
  }
  // The explicit members from `begin` on.
  void NoteInstance(ExpEntity& entity, int begin) {
    VELMAR::ExpRuntimeRegistry& registry = *VELMAR::ExpRuntimeRegistry::GetInstance();
    Note(kType).type = registry.GetEntityRuntimeType(entity.GetExpClassName(), schema_);
    const int end = entity.GetNofExplicitMembers();
    Note(kNumber).number = begin;
    Note(kNumber).number = end;
    for (int index = begin; index < end; ++index) NoteValue(entity.GetMember(index));
  }
  void NoteValue(ExpAttribute* value) {
    const bool isMissing = value == nullptr || value->IsNotProvided() || value->IsOmitted();
    if (!isMissing) {
      value->Accept(this);
      return;
    }
    Step& step = Note(kUnset);
    if (value != nullptr && value->IsNotProvided()) step.number |= kNotProvided;
    if (value != nullptr && value->IsOmitted()) step.number |= kOmitted;
  }
  void VisitExpReal(VELMAR::ExpReal* value) override { Note(kReal).real = value->GetExpReal(); }
  void VisitExpInteger(VELMAR::ExpInteger* value) override { Note(kInteger).number = value->GetExpInteger(); }
  void VisitExpLink(VELMAR::ExpLink* value) override { Note(kLink).number = value->GetExpLink(); }
  void VisitExpString(VELMAR::ExpString* value) override { NoteText(kText, value->GetExpString()); }
  void VisitExpEnumeration(VELMAR::ExpEnumeration* value) override {
    NoteText(kEnumeration, value->GetExpEnumerationString());
  }
  void VisitExpSelect(VELMAR::ExpSelect* value) override {
    // The type names are what the printed value begins with.
    const std::size_t select = steps_.size();
    Note(kSelect);
    if (value->GetExpSelectValue() != nullptr) {
      const std::string text = value->ToString();
      std::size_t begin = 0;
      for (std::size_t end; (end = text.find_first_not_of(kNameCharacters, begin)) > begin && text[end] == '(';) {
        NoteText(kText, text.substr(begin, end - begin));
        ++steps_[select].number;
        begin = end + 1;
      }
    }
    NoteValue(value->GetExpSelectValue());
  }
  void VisitExpAggregation(VELMAR::ExpAggregation* value) override {
    Note(kList).number = static_cast<int>(value->NofElements());
    for (ExpAttribute* element : *value->GetExpAggregation()) NoteValue(element);
  }

  ExpEntity* BuildInstance(ExpFile& file) {
    ExpEntity* entity = (next_++)->type->CreateInstance(static_cast<int>(file.GetAdminId()));
    int index = (next_++)->number;
    const int end = (next_++)->number;
    for (; index < end; ++index) SetValue(*entity->GetMember(index));
    return entity;
  }
  void SetValue(ExpAttribute& value) {
    const Step& step = *next_++;
    switch (step.kind) {
      case kReal:
        value.SetExpReal(step.real);
        break;
      case kInteger:
        value.SetExpInteger(step.number);
        break;
      case kLink:
        value.SetExpLink(step.number);
        break;
      case kText:
        value.SetExpString(texts_[step.text]);
        break;
      case kEnumeration:
        value.SetExpEnumeration(texts_[step.text]);
        break;
      case kSelect:
        for (int names = step.number; names > 0; --names) value.AddExpSelectTypeName(texts_[(next_++)->text]);
        SetValue(value);
        break;
      case kList:
        for (int elements = step.number; elements > 0; --elements) value.AddValue(BuildValue());
        break;
      default:
        if ((step.number & kNotProvided) != 0) value.SetNotProvided(true);
        if ((step.number & kOmitted) != 0) value.SetOmitted(true);
    }
  }
  ExpAttribute* BuildValue() {
    const Step& step = *next_;
    switch (step.kind) {
      case kReal:
        ++next_;
        return new VELMAR::ExpReal(step.real);
      case kInteger:
        ++next_;
        return new VELMAR::ExpInteger(step.number);
      case kLink:
        ++next_;
        return new VELMAR::ExpLink(step.number);
      case kText:
        ++next_;
        return new VELMAR::ExpString(texts_[step.text]);
      case kList: {
        auto* list = new VELMAR::ExpAggregation;
        SetValue(*list);
        return list;
      }
      default: {
        auto* select = new VELMAR::ExpSelect;
        SetValue(*select);
        return select;
      }
    }
  }

  static constexpr const char* kNameCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ_0123456789";

  std::string schema_;
  std::size_t instances_ = 0;
  std::vector<Step> steps_;
  std::vector<std::string> texts_;  // UTF-8
  const Step* next_ = nullptr;
};

// ----------------------------------------------------------------------------------------------------- one process

template <class Action>
double Seconds(Action action) {
  const auto start = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// A line of /proc/self/status, in bytes.
double MemoryStatus(const std::string& name) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.compare(0, name.size(), name) == 0) return std::strtod(line.c_str() + name.size(), nullptr) * 1024;
  }
  throw std::runtime_error("/proc/self/status has no " + name);
}

struct Figures {
  double read;
  double write;
  double written;  // bytes
  double free;
  double peak;        // bytes while reading, beyond what the process held before
  double population;  // bytes
  double floor;
};

// A file of this process that is deleted at the end.
struct TemporaryFile {
  const std::string name =
      std::filesystem::temp_directory_path() / ("velmar_measure." + std::to_string(getpid()) + ".tmp");
  TemporaryFile() = default;
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    std::error_code error;
    std::filesystem::remove(name, error);
  }
};

Figures MeasureFile(const std::string& path) {
  Figures figures{};
  ExpFile file;
  const double before = MemoryStatus("VmRSS:");
  figures.read = Seconds([&] { file.Read(path); });
  figures.peak = MemoryStatus("VmHWM:") - before;
  malloc_trim(0);
  figures.population = MemoryStatus("VmRSS:") - before;
  for (int number = file.GetMaxEntityNumber(); number >= 0; --number) {
    if (ExpEntity* entity = file.GetEntity(number)) VELMAR::MarkUnsetValues(*entity);  // so that they can be written
  }
  const TemporaryFile out;
  figures.write = Seconds([&] { file.Write(out.name); });
  figures.written = static_cast<double>(std::filesystem::file_size(out.name));
  figures.free = Seconds([&] { file.ClearEntityVector(); });
  return figures;
}

Figures MeasureFloor(Recipe& recipe) {
  Figures figures{};
  ExpFile file;
  figures.floor = Seconds([&] { recipe.Build(file); });
  return figures;
}

// What `measure` finds out in a process of its own.
template <class Measure>
Figures InNewProcess(Measure measure) {
  int ends[2];
  if (pipe(ends) != 0) throw std::runtime_error(std::strerror(errno));
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error(std::strerror(errno));
  if (child == 0) {
    int status = EXIT_FAILURE;
    try {
      const Figures figures = measure();
      if (write(ends[1], &figures, sizeof figures) == sizeof figures) status = EXIT_SUCCESS;
    } catch (const std::exception& error) {
      fmt::print(stderr, "{}\n", error.what());
    }
    _exit(status);
  }
  close(ends[1]);
  Figures figures{};
  const bool complete = read(ends[0], &figures, sizeof figures) == sizeof figures;
  close(ends[0]);
  waitpid(child, nullptr, 0);
  if (!complete) throw std::runtime_error("a measurement failed");
  return figures;
}

// The values of the file. This process has not read it itself, so that its memory is like new.
Recipe RecipeOf(const std::string& path) {
  const TemporaryFile values;
  InNewProcess([&] {
    ExpFile file;
    file.Read(path);
    std::ofstream out(values.name, std::ios::binary);
    Recipe(file).Save(out);
    return Figures{};
  });
  std::ifstream in(values.name, std::ios::binary);
  Recipe recipe;
  recipe.Load(in);
  if (recipe.Instances() == 0) throw std::runtime_error(path + ": no instances");
  return recipe;
}

// ------------------------------------------------------------------------------------------------------ the report

double Median(const std::vector<Figures>& rounds, double Figures::*figure) {
  std::vector<double> values;
  values.reserve(rounds.size());
  for (const Figures& round : rounds) values.push_back(round.*figure);
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

void Measure(const std::string& path, int rounds) {
  Recipe recipe = RecipeOf(path);
  std::vector<Figures> all;
  for (int round = 0; round < rounds; ++round) {
    Figures figures = InNewProcess([&] { return MeasureFile(path); });
    figures.floor = InNewProcess([&] { return MeasureFloor(recipe); }).floor;
    all.push_back(figures);
  }
  const auto median = [&all](double Figures::*figure) { return Median(all, figure); };
  const auto bytes = static_cast<double>(std::filesystem::file_size(path));
  const double floor = median(&Figures::floor);
  const auto instances = static_cast<double>(recipe.Instances());
  const double population = median(&Figures::population);
  fmt::print("{}: {:.1f} MB, {:.0f} instances, {} rounds\n", path, bytes / 1e6, instances, rounds);
  const auto time = [&](const char* what, double seconds, double size) {
    fmt::print("  {:<10} {:8.3f} s {:8.1f} MB/s {:6.2f} x floor\n", what, seconds, size / 1e6 / seconds, seconds / floor);
  };
  time("floor", floor, bytes);
  time("read", median(&Figures::read), bytes);
  time("write", median(&Figures::write), median(&Figures::written));
  time("free", median(&Figures::free), bytes);
  fmt::print("  {:<10} {:8.1f} MB {:8.2f} x file\n", "peak", median(&Figures::peak) / 1e6,
             median(&Figures::peak) / bytes);
  fmt::print("  {:<10} {:8.1f} MB {:8.2f} x file {:6.0f} bytes an instance\n", "population", population / 1e6,
             population / bytes, population / instances);
}

}  // namespace

int main(int argc, char** argv) {
  int rounds = 3;
  std::vector<std::string> files;
  for (int i = 1; i < argc; ++i) {
    static const char kRounds[] = "--rounds=";
    if (std::strncmp(argv[i], kRounds, sizeof kRounds - 1) == 0) {
      rounds = std::max(1, std::atoi(argv[i] + sizeof kRounds - 1));
    } else {
      files.emplace_back(argv[i]);
    }
  }
  if (files.empty() || files.front().front() == '-') {
    fmt::print(stderr, "usage: velmar_measure [--rounds=N] FILE...\n");
    return 2;
  }
  try {
    VELMAR::LoadBundledSchemas();
    for (const std::string& path : files) Measure(path, rounds);
  } catch (const std::exception& error) {
    fmt::print(stderr, "velmar_measure: {}\n", error.what());
    return 1;
  }
  return 0;
}
