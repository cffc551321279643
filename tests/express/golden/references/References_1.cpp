// Generated from references.exp by velmar-express 3.1. Do not edit.
#include "References.h"

namespace VELMAR::References {

Edge::~Edge() = default;

ExpAttribute* Edge::GetMember(int index) {
  switch (index) {
    case 0: return &first_;
    case 1: return &through_;
    case 2: return &grid_;
    case 3: return &either_;
    case 4: return &several_;
    case 5: return &mixed_;
    case 6: return &no_reference_;
    case 7: return &no_references_;
    default: return nullptr;
  }
}

void Visitor::VisitEdge(Edge* entity) {
  VisitExpEntity(entity);
}

ExpSchemaVisit_::~ExpSchemaVisit_() = default;

void Visitor::VisitExpSchemaVisit_(ExpSchemaVisit_* entity) {
  VisitExpEntity(entity);
}

Holder::~Holder() = default;

ExpAttribute* Holder::GetMember(int index) {
  switch (index) {
    case 0: return &node_;
    default: return nullptr;
  }
}

void Visitor::VisitHolder(Holder* entity) {
  VisitExpEntity(entity);
}

Log_::~Log_() = default;

void Visitor::VisitLog_(Log_* entity) {
  VisitVisitExpEntity_(entity);
}

Node::~Node() = default;

ExpAttribute* Node::GetMember(int index) {
  switch (index) {
    case 0: return &name_;
    default: return nullptr;
  }
}

void Visitor::VisitNode_(Node* entity) {
  VisitExpEntity(entity);
}

SpecialHolder::~SpecialHolder() = default;

void Visitor::VisitSpecialHolder(SpecialHolder* entity) {
  VisitHolder(entity);
}

SpecialNode::~SpecialNode() = default;

void Visitor::VisitSpecialNode(SpecialNode* entity) {
  VisitNode_(entity);
}

Tagged::~Tagged() = default;

ExpAttribute* Tagged::GetMember(int index) {
  switch (index) {
    case 0: return &tag_;
    default: return nullptr;
  }
}

void Visitor::VisitTagged(Tagged* entity) {
  VisitExpEntity(entity);
}

TaggedNode::~TaggedNode() = default;

ExpAttribute* TaggedNode::GetMember(int index) {
  switch (index) {
    case 0: return &this->Node::name_;
    case 1: return &this->Tagged::tag_;
    default: return nullptr;
  }
}

void Visitor::VisitTaggedNode(TaggedNode* entity) {
  VisitSpecialNode(entity);
}

VisitExpEntity_::~VisitExpEntity_() = default;

void Visitor::VisitVisitExpEntity_(VisitExpEntity_* entity) {
  VisitExpEntity(entity);
}

VisitNode::~VisitNode() = default;

void Visitor::VisitVisitNode(VisitNode* entity) {
  VisitExpEntity(entity);
}

Visitor_::~Visitor_() = default;

ExpAttribute* Visitor_::GetMember(int index) {
  switch (index) {
    case 0: return &resolve_;
    case 1: return &visitor_;
    case 2: return &accept_;
    case 3: return &exp_store_;
    default: return nullptr;
  }
}

void Visitor::VisitVisitor_(Visitor_* entity) {
  VisitExpEntity(entity);
}

namespace {

constexpr ExpEntityTypeRow kRows[] = {
    {"EDGE", &ExpSchemaCreate<Edge>, 8, 0, 0, 1,
     "",
     "",
     "first through grid either several mixed no_reference no_references",
     &typeid(Edge),
     &ExpSchemaVisit<&Visitor::VisitEdge>},
    {"EXP_SCHEMA_VISIT", &ExpSchemaCreate<ExpSchemaVisit_>, 0, 0, 0, 2,
     "",
     "",
     "",
     &typeid(ExpSchemaVisit_),
     &ExpSchemaVisit<&Visitor::VisitExpSchemaVisit_>},
    {"HOLDER", &ExpSchemaCreate<Holder>, 1, 0, 0, 3,
     "",
     "SPECIAL_HOLDER",
     "node",
     &typeid(Holder),
     &ExpSchemaVisit<&Visitor::VisitHolder>},
    {"LOG_", &ExpSchemaCreate<Log_>, 0, 0, 0, 4,
     "VISIT_EXP_ENTITY",
     "",
     "",
     &typeid(Log_),
     &ExpSchemaVisit<&Visitor::VisitLog_>},
    {"NODE", &ExpSchemaCreate<Node>, 1, 0, 0, 5,
     "",
     "SPECIAL_NODE",
     "name",
     &typeid(Node),
     &ExpSchemaVisit<&Visitor::VisitNode_>},
    {"SPECIAL_HOLDER", &ExpSchemaCreate<SpecialHolder>, 1, 0, 1, 6,
     "HOLDER",
     "",
     "node",
     &typeid(SpecialHolder),
     &ExpSchemaVisit<&Visitor::VisitSpecialHolder>},
    {"SPECIAL_NODE", &ExpSchemaCreate<SpecialNode>, 1, 0, 1, 7,
     "NODE",
     "TAGGED_NODE",
     "name",
     &typeid(SpecialNode),
     &ExpSchemaVisit<&Visitor::VisitSpecialNode>},
    {"TAGGED", &ExpSchemaCreate<Tagged>, 1, 0, 0, 8,
     "",
     "TAGGED_NODE",
     "tag",
     &typeid(Tagged),
     &ExpSchemaVisit<&Visitor::VisitTagged>},
    {"TAGGED_NODE", &ExpSchemaCreate<TaggedNode>, 2, 0, 2, 9,
     "NODE SPECIAL_NODE TAGGED",
     "",
     "name tag",
     &typeid(TaggedNode),
     &ExpSchemaVisit<&Visitor::VisitTaggedNode>},
    {"VISIT_EXP_ENTITY", &ExpSchemaCreate<VisitExpEntity_>, 0, 0, 0, 10,
     "",
     "LOG_",
     "",
     &typeid(VisitExpEntity_),
     &ExpSchemaVisit<&Visitor::VisitVisitExpEntity_>},
    {"VISIT_NODE", &ExpSchemaCreate<VisitNode>, 0, 0, 0, 11,
     "",
     "",
     "",
     &typeid(VisitNode),
     &ExpSchemaVisit<&Visitor::VisitVisitNode>},
    {"VISITOR", &ExpSchemaCreate<Visitor_>, 4, 0, 0, 12,
     "",
     "",
     "resolve visitor accept exp_store",
     &typeid(Visitor_),
     &ExpSchemaVisit<&Visitor::VisitVisitor_>},
};

}  // namespace

extern const ExpEntityTypeTable kEntityTypes1;
const ExpEntityTypeTable kEntityTypes1 = {kRows, 12};

}  // namespace VELMAR::References
