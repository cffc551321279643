// Generated from multiple_inheritance.exp by velmar-express 3.1. Do not edit.
#include "MultipleInheritance.h"

namespace VELMAR::MultipleInheritance {

Apart::~Apart() = default;

Below::~Below() = default;

Bottom::~Bottom() = default;

ExpAttribute* Bottom::GetMember(int index) {
  switch (index) {
    case 0: return &this->Root::r1_;
    case 1: return &this->Root::r2_;
    case 2: return &this->Right::r_;
    case 3: return &this->Left::l_;
    case 4: return &this->OtherRoot::o_;
    case 5: return &b_;
    default: return nullptr;
  }
}

Left::~Left() = default;

ExpAttribute* Left::GetMember(int index) {
  switch (index) {
    case 2: return &l_;
    default: return Root::GetMember(index);
  }
}

OtherRoot::~OtherRoot() = default;

ExpAttribute* OtherRoot::GetMember(int index) {
  switch (index) {
    case 0: return &o_;
    default: return nullptr;
  }
}

Right::~Right() = default;

ExpAttribute* Right::GetMember(int index) {
  switch (index) {
    case 2: return &r_;
    default: return Root::GetMember(index);
  }
}

Root::~Root() = default;

ExpAttribute* Root::GetMember(int index) {
  switch (index) {
    case 0: return &r1_;
    case 1: return &r2_;
    default: return nullptr;
  }
}

Twice::~Twice() = default;

ExpAttribute* Twice::GetMember(int index) {
  switch (index) {
    case 0: return &this->Root::r1_;
    case 1: return &this->Root::r2_;
    case 2: return &this->Left::l_;
    case 3: return &t_;
    default: return nullptr;
  }
}

namespace {

constexpr ExpEntityTypeRow kEntityTypes[] = {
    {"APART", &ExpSchemaCreate<Apart>, 3, 0, 3, 1,
     "ROOT LEFT",
     "",
     "r1 r2 l"},
    {"BELOW", &ExpSchemaCreate<Below>, 6, 0, 6, 2,
     "ROOT RIGHT LEFT OTHER_ROOT BOTTOM",
     "",
     "r1 r2 r l o b"},
    {"BOTTOM", &ExpSchemaCreate<Bottom>, 6, 0, 5, 3,
     "ROOT RIGHT LEFT OTHER_ROOT",
     "BELOW",
     "r1 r2 r l o b"},
    {"LEFT", &ExpSchemaCreate<Left>, 3, 0, 2, 4,
     "ROOT",
     "BOTTOM TWICE APART",
     "r1 r2 l"},
    {"OTHER_ROOT", &ExpSchemaCreate<OtherRoot>, 1, 0, 0, 5,
     "",
     "BOTTOM",
     "o"},
    {"RIGHT", &ExpSchemaCreate<Right>, 3, 0, 2, 6,
     "ROOT",
     "BOTTOM",
     "r1 r2 r"},
    {"ROOT", &ExpSchemaCreate<Root>, 2, 0, 0, 7,
     "",
     "LEFT RIGHT TWICE",
     "r1 r2"},
    {"TWICE", &ExpSchemaCreate<Twice>, 4, 0, 3, 8,
     "ROOT LEFT",
     "",
     "r1 r2 l t"},
};

}  // namespace

void Register1(const char* schema) { RegisterEntityTypes(schema, kEntityTypes, 8); }

}  // namespace VELMAR::MultipleInheritance
