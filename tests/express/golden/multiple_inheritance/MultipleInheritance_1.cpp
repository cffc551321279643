// Generated from multiple_inheritance.exp by velmar-express 3.1. Do not edit.
#include "MultipleInheritance.h"

namespace VELMAR::MultipleInheritance {

Apart::~Apart() = default;

void Visitor::VisitApart(Apart* entity) {
  VisitLeft(entity);
}

Below::~Below() = default;

void Visitor::VisitBelow(Below* entity) {
  VisitBottom(entity);
}

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

void Visitor::VisitBottom(Bottom* entity) {
  VisitRight(entity);
}

Left::~Left() = default;

ExpAttribute* Left::GetMember(int index) {
  switch (index) {
    case 2: return &l_;
    default: return Root::GetMember(index);
  }
}

void Visitor::VisitLeft(Left* entity) {
  VisitRoot(entity);
}

OtherRoot::~OtherRoot() = default;

ExpAttribute* OtherRoot::GetMember(int index) {
  switch (index) {
    case 0: return &o_;
    default: return nullptr;
  }
}

void Visitor::VisitOtherRoot(OtherRoot* entity) {
  VisitExpEntity(entity);
}

Right::~Right() = default;

ExpAttribute* Right::GetMember(int index) {
  switch (index) {
    case 2: return &r_;
    default: return Root::GetMember(index);
  }
}

void Visitor::VisitRight(Right* entity) {
  VisitRoot(entity);
}

Root::~Root() = default;

ExpAttribute* Root::GetMember(int index) {
  switch (index) {
    case 0: return &r1_;
    case 1: return &r2_;
    default: return nullptr;
  }
}

void Visitor::VisitRoot(Root* entity) {
  VisitExpEntity(entity);
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

void Visitor::VisitTwice(Twice* entity) {
  VisitRoot(entity);
}

namespace {

constexpr ExpEntityTypeRow kRows[] = {
    {"APART", &ExpSchemaCreate<Apart>, 3, 0, 3, 1,
     "ROOT LEFT",
     "",
     "r1 r2 l",
     &typeid(Apart),
     &ExpSchemaVisit<&Visitor::VisitApart>},
    {"BELOW", &ExpSchemaCreate<Below>, 6, 0, 6, 2,
     "ROOT RIGHT LEFT OTHER_ROOT BOTTOM",
     "",
     "r1 r2 r l o b",
     &typeid(Below),
     &ExpSchemaVisit<&Visitor::VisitBelow>},
    {"BOTTOM", &ExpSchemaCreate<Bottom>, 6, 0, 5, 3,
     "ROOT RIGHT LEFT OTHER_ROOT",
     "BELOW",
     "r1 r2 r l o b",
     &typeid(Bottom),
     &ExpSchemaVisit<&Visitor::VisitBottom>},
    {"LEFT", &ExpSchemaCreate<Left>, 3, 0, 2, 4,
     "ROOT",
     "BOTTOM TWICE APART",
     "r1 r2 l",
     &typeid(Left),
     &ExpSchemaVisit<&Visitor::VisitLeft>},
    {"OTHER_ROOT", &ExpSchemaCreate<OtherRoot>, 1, 0, 0, 5,
     "",
     "BOTTOM",
     "o",
     &typeid(OtherRoot),
     &ExpSchemaVisit<&Visitor::VisitOtherRoot>},
    {"RIGHT", &ExpSchemaCreate<Right>, 3, 0, 2, 6,
     "ROOT",
     "BOTTOM",
     "r1 r2 r",
     &typeid(Right),
     &ExpSchemaVisit<&Visitor::VisitRight>},
    {"ROOT", &ExpSchemaCreate<Root>, 2, 0, 0, 7,
     "",
     "LEFT RIGHT TWICE",
     "r1 r2",
     &typeid(Root),
     &ExpSchemaVisit<&Visitor::VisitRoot>},
    {"TWICE", &ExpSchemaCreate<Twice>, 4, 0, 3, 8,
     "ROOT LEFT",
     "",
     "r1 r2 l t",
     &typeid(Twice),
     &ExpSchemaVisit<&Visitor::VisitTwice>},
};

}  // namespace

extern const ExpEntityTypeTable kEntityTypes1;
const ExpEntityTypeTable kEntityTypes1 = {kRows, 8};

}  // namespace VELMAR::MultipleInheritance
