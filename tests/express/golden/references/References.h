// Generated from references.exp by velmar-express 3.1. Do not edit.
#pragma once

#include <vector>

#include "ExpEntityVisitor.h"
#include "ExpSchemaLibrary.h"

#if VELMAR_VERSION_MAJOR != 3 || VELMAR_VERSION_MINOR != 1
#error "Generated for Velmar 3.1: generate this schema library again with the velmar-express of your version"
#endif

namespace VELMAR::References {

/// Registers the entity types of REFERENCES, which loading the library does, too. A call makes sure
/// that the library is linked and loaded; any further one does nothing.
VELMAR_API void Load();

/// Registers the same classes under a further schema name, "STEP_IR_AIC" say.
VELMAR_API void RegisterAs(const char* registrySchemaName);

/// What the classes of all entities derive from. It does what ExpEntity does; but as its operations are in
/// this library, references to them are settled while linking and not, class by class, while loading.
class VELMAR_API EntityBase : public ExpEntity {
 public:
  ~EntityBase() override;
  ExpAttribute* GetMember(int index) override;
  ExpAttribute* GetMember(const std::string& name) override;
  std::vector<std::string>* GetMemberNames() override;
  const std::string& GetExpClassName() const override;
  std::vector<std::string>* GetExpSuperClasses() const override;
  std::vector<std::string>* GetExpSubClasses() const override;
  int GetNofInverseMembers() override;
  int GetNofExplicitMembers() override;
  int GetExternalMappingStartIndex() override;
  int GetTypeNumberOfEntity() override;
  bool InsertInObjTree() const override;
  void SetEntityNumber(int number) override;
  int GetEntityNumber() override;
  std::string ToString() override;
  /// Calls the operation of a Visitor for the entity's class; with other visitors does what ExpEntity does.
  void Accept(ExpEntityVisitor* visitor) override;
};

// The classes of the entities. An attribute that refers to entities has two accessors: one gives its value,
// the other the entities that it leads to in a store, as Resolve or, for aggregates, ResolveAll does.
class Edge;
class ExpSchemaVisit_;
class Holder;
class Log_;
class Node;
class SpecialHolder;
class SpecialNode;
class Tagged;
class TaggedNode;
class VisitExpEntity_;
class VisitNode;
class Visitor_;

/// Receives the entities of this schema, each by the operation for its class. Unless such an operation is
/// overridden it calls that for the first supertype, or VisitExpEntity where the entity has none.
class VELMAR_API Visitor : public ExpEntityVisitor {
 public:
  using ExpEntityVisitor::ExpEntityVisitor;
  ~Visitor() override;

  /// Does nothing.
  virtual void VisitExpEntity(ExpEntity*);
  virtual void VisitEdge(Edge*);
  virtual void VisitExpSchemaVisit_(ExpSchemaVisit_*);
  virtual void VisitHolder(Holder*);
  virtual void VisitLog_(Log_*);
  virtual void VisitNode_(Node*);
  virtual void VisitSpecialHolder(SpecialHolder*);
  virtual void VisitSpecialNode(SpecialNode*);
  virtual void VisitTagged(Tagged*);
  virtual void VisitTaggedNode(TaggedNode*);
  virtual void VisitVisitExpEntity_(VisitExpEntity_*);
  virtual void VisitVisitNode(VisitNode*);
  virtual void VisitVisitor_(Visitor_*);
};

/// edge
class VELMAR_API Edge : public EntityBase {
 public:
  ~Edge() override;
  using EntityBase::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpLink& First() { return first_; }  ///< node
  template <class ExpStore>
  Node* First(ExpStore& store) {
    return Resolve<Node>(store, first_);
  }
  ExpAggregation& Through() { return through_; }  ///< optional nodes
  template <class ExpStore>
  std::vector<Node*> Through(ExpStore& store) {
    return ResolveAll<Node>(store, through_);
  }
  ExpAggregation& Grid() { return grid_; }  ///< array [1 : 2] of list of node
  template <class ExpStore>
  std::vector<std::vector<Node*>> Grid(ExpStore& store) {
    return ResolveAll<Node, 2>(store, grid_);
  }
  ExpSelect& Either() { return either_; }  ///< node_or_edge
  template <class ExpStore>
  ExpEntity* Either(ExpStore& store) {
    return Resolve<ExpEntity>(store, either_);
  }
  ExpAggregation& Several() { return several_; }  ///< set of edge_or_label
  template <class ExpStore>
  std::vector<ExpEntity*> Several(ExpStore& store) {
    return ResolveAll<ExpEntity>(store, several_);
  }
  ExpSelect& Mixed() { return mixed_; }  ///< edge_or_label
  template <class ExpStore>
  ExpEntity* Mixed(ExpStore& store) {
    return Resolve<ExpEntity>(store, mixed_);
  }
  ExpSelect& NoReference() { return no_reference_; }  ///< plain
  ExpAggregation& NoReferences() { return no_references_; }  ///< list of label

 protected:
  ExpLink first_;
  ExpAggregation through_;
  ExpAggregation grid_;
  ExpSelect either_;
  ExpAggregation several_;
  ExpSelect mixed_;
  ExpSelect no_reference_;
  ExpAggregation no_references_;
};

/// exp_schema_visit
class VELMAR_API ExpSchemaVisit_ : public EntityBase {
 public:
  ~ExpSchemaVisit_() override;
};

/// holder
class VELMAR_API Holder : public EntityBase {
 public:
  ~Holder() override;
  using EntityBase::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpLink& Node() { return node_; }  ///< node
  template <class ExpStore>
  References::Node* Node(ExpStore& store) {
    return Resolve<References::Node>(store, node_);
  }

 protected:
  ExpLink node_;
};

/// visit_exp_entity
class VELMAR_API VisitExpEntity_ : public EntityBase {
 public:
  ~VisitExpEntity_() override;
};

/// log_
class VELMAR_API Log_ : public VisitExpEntity_ {
 public:
  ~Log_() override;
};

/// node
class VELMAR_API Node : virtual public EntityBase {
 public:
  ~Node() override;
  using EntityBase::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpString& Name() { return name_; }  ///< label

 protected:
  ExpString name_;
};

/// special_holder
class VELMAR_API SpecialHolder : public Holder {
 public:
  ~SpecialHolder() override;

  ExpLink& Special() { return Holder::node_; }  ///< special_node
  template <class ExpStore>
  SpecialNode* Special(ExpStore& store) {
    return Resolve<SpecialNode>(store, Holder::node_);
  }
};

/// special_node
class VELMAR_API SpecialNode : public Node {
 public:
  ~SpecialNode() override;
};

/// tagged
class VELMAR_API Tagged : virtual public EntityBase {
 public:
  ~Tagged() override;
  using EntityBase::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpString& Tag() { return tag_; }  ///< label

 protected:
  ExpString tag_;
};

/// tagged_node
class VELMAR_API TaggedNode : public SpecialNode, public Tagged {
 public:
  ~TaggedNode() override;
  using EntityBase::GetMember;
  ExpAttribute* GetMember(int index) override;
};

/// visit_node
class VELMAR_API VisitNode : public EntityBase {
 public:
  ~VisitNode() override;
};

/// visitor
class VELMAR_API Visitor_ : public EntityBase {
 public:
  ~Visitor_() override;
  using EntityBase::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpLink& Resolve_() { return resolve_; }  ///< node
  template <class ExpStore>
  Node* Resolve_(ExpStore& store) {
    return Resolve<Node>(store, resolve_);
  }
  ExpLink& Visitor__() { return visitor_; }  ///< visitor
  template <class ExpStore>
  Visitor_* Visitor__(ExpStore& store) {
    return Resolve<Visitor_>(store, visitor_);
  }
  ExpLink& Accept_() { return accept_; }  ///< node
  template <class ExpStore>
  Node* Accept_(ExpStore& store) {
    return Resolve<Node>(store, accept_);
  }
  ExpLink& ExpStore_() { return exp_store_; }  ///< node
  template <class ExpStore>
  Node* ExpStore_(ExpStore& store) {
    return Resolve<Node>(store, exp_store_);
  }

 protected:
  ExpLink resolve_;
  ExpLink visitor_;
  ExpLink accept_;
  ExpLink exp_store_;
};

}  // namespace VELMAR::References
