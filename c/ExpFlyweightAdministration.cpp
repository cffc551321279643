#include "ExpFlyweightAdministration.h"

#include <algorithm>
#include <ostream>
#include <stdexcept>
#include <string>

#include "ExpRuntimeRegistry.h"

namespace VELMAR {

namespace {

constexpr int kDefaultSize = 10000;
// An empty table takes its default size for numbers below this, whatever size was asked for.
constexpr int kSmallNumbers = 1000;

// Twice the number in the 32-bit arithmetic of instance numbers, widened with its sign: beyond 2^30 the request is so
// large that the table refuses it.
std::size_t TwiceNumber(int number) {
  const auto doubled = static_cast<int>(2u * static_cast<unsigned int>(number));
  return static_cast<std::size_t>(static_cast<long>(doubled));
}

}  // namespace

unsigned int ExpFlyweightAdministration::adminIdCounter = 0;

ExpFlyweightAdministration::ExpFlyweightAdministration() : ExpFlyweightAdministration(kDefaultSize) {}

ExpFlyweightAdministration::ExpFlyweightAdministration(int initialSize)
    : adminId_(adminIdCounter++), maxEntityNumber_(0), initialSize_(initialSize) {
  Init(initialSize);
}

ExpFlyweightAdministration::~ExpFlyweightAdministration() { ExpFlyweightAdministration::ClearEntityVector(); }

void ExpFlyweightAdministration::Init(int size) {
  initialSize_ = size;
  if (size > static_cast<int>(expEntityVector.size())) Resize(static_cast<std::size_t>(size));
}

// New slots are null because the allocator's memory is zero. Slots that have been used are never handed out again: a
// table that gets shorter moves to fresh memory, which costs less than looking at every slot.
void ExpFlyweightAdministration::Resize(std::size_t slots) {
  if (slots < expEntityVector.size()) {
    Table shorter(expEntityVector.begin(), expEntityVector.begin() + static_cast<std::ptrdiff_t>(slots));
    expEntityVector.swap(shorter);
  } else {
    expEntityVector.resize(slots);
  }
}

ExpEntity*& ExpFlyweightAdministration::Slot(int number) {
  return expEntityVector.at(static_cast<std::size_t>(static_cast<long>(number)));
}

ExpEntity* ExpFlyweightAdministration::GetEntity(int number) {
  // A negative number is beyond every table as an unsigned one.
  const auto slot = static_cast<unsigned int>(number);
  return slot < expEntityVector.size() && number >= 0 ? expEntityVector[slot] : nullptr;
}

void ExpFlyweightAdministration::AddEntity(int number, ExpEntity* entity) {
  if (expEntityVector.empty()) {
    Resize(number < kSmallNumbers ? kDefaultSize : TwiceNumber(number));
  } else if (number >= 0 && expEntityVector.size() <= static_cast<std::size_t>(number)) {
    Resize(TwiceNumber(number));
  }
  try {
    Slot(number) = entity;
  } catch (const std::out_of_range&) {
    std::string message =
        "\nsize of expEntityVector before extension: " + std::to_string(expEntityVector.size());
    Resize(TwiceNumber(number));
    Slot(number) = entity;
    message += "\nsize of expEntityVector after extension: " + std::to_string(expEntityVector.size()) + "\n";
    Log(message);
  }
  maxEntityNumber_ = std::max(maxEntityNumber_, number);
}

int ExpFlyweightAdministration::CreateEntityNumber() { return ++maxEntityNumber_; }
unsigned int ExpFlyweightAdministration::GetAdminId() { return adminId_; }
std::size_t ExpFlyweightAdministration::GetEntityVectorSize() { return expEntityVector.size(); }
int ExpFlyweightAdministration::GetMaxEntityNumber() { return maxEntityNumber_; }
int ExpFlyweightAdministration::Erase() { return 0; }

void ExpFlyweightAdministration::Write(std::ostream& os) {
  const std::size_t end = std::min(expEntityVector.size(), static_cast<std::size_t>(maxEntityNumber_) + 1);
  for (std::size_t number = 0; number < end; ++number) {
    if (expEntityVector[number] == nullptr) continue;
    std::string line = expEntityVector[number]->ToString();
    line += '\n';
    os.write(line.data(), static_cast<std::streamsize>(line.size()));
  }
}

void ExpFlyweightAdministration::DeleteEntities() {
  try {
    if (maxEntityNumber_ > 0) ExpRuntimeRegistry::GetInstance()->DeleteAllInstances(GetAdminId());
  } catch (...) {  // an entity's destructor; the store is empty all the same
  }
  maxEntityNumber_ = 0;
}

void ExpFlyweightAdministration::ForgetEntities() {
  maxEntityNumber_ = std::max(maxEntityNumber_, 1);  // there may be instances that were never numbered
  DeleteEntities();
  const std::size_t slots = expEntityVector.size();
  Resize(0);
  Resize(slots);
}

void ExpFlyweightAdministration::ClearEntityVector() {
  DeleteEntities();
  Resize(0);
}

void ExpFlyweightAdministration::ResetEntityVector() {
  ClearEntityVector();
  Init(initialSize_);
}

}  // namespace VELMAR
