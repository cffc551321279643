#include "ExpressParser.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace VELMAR::Express {
namespace {

constexpr int kDeepest = 200;

// Thrown after a syntax error has been reported; caught where parsing can go on.
struct SyntaxError {};

// The words that open a block and the word that closes it.
struct Block {
  TokenKind begin;
  TokenKind end;
};
constexpr Block kBlocks[] = {
    {TokenKind::Alias, TokenKind::EndAlias},
    {TokenKind::Begin, TokenKind::End},
    {TokenKind::Case, TokenKind::EndCase},
    {TokenKind::Constant, TokenKind::EndConstant},
    {TokenKind::Entity, TokenKind::EndEntity},
    {TokenKind::Function, TokenKind::EndFunction},
    {TokenKind::If, TokenKind::EndIf},
    {TokenKind::Local, TokenKind::EndLocal},
    {TokenKind::Procedure, TokenKind::EndProcedure},
    {TokenKind::Repeat, TokenKind::EndRepeat},
    {TokenKind::Rule, TokenKind::EndRule},
    {TokenKind::Schema, TokenKind::EndSchema},
    {TokenKind::SubtypeConstraint, TokenKind::EndSubtypeConstraint},
    {TokenKind::Type, TokenKind::EndType},
};

TokenKind EndOf(TokenKind begin) {
  for (const Block& block : kBlocks) {
    if (block.begin == begin) return block.end;
  }
  return TokenKind::EndOfFile;
}

bool OpensBlock(TokenKind kind) { return EndOf(kind) != TokenKind::EndOfFile; }

bool ClosesBlock(TokenKind kind) {
  return std::any_of(std::begin(kBlocks), std::end(kBlocks),
                     [&](const Block& block) { return block.end == kind; });
}

bool IsReserved(TokenKind kind) { return kind == TokenKind::Builtin || kind >= TokenKind::Abstract; }

bool StartsDeclaration(TokenKind kind) {
  switch (kind) {
    case TokenKind::Constant:
    case TokenKind::Entity:
    case TokenKind::Function:
    case TokenKind::Procedure:
    case TokenKind::Rule:
    case TokenKind::SubtypeConstraint:
    case TokenKind::Type:
    case TokenKind::Use:
    case TokenKind::Reference:
      return true;
    default:
      return false;
  }
}

class Parser {
 public:
  Parser(Model& model, Model::File& file, Diagnostics& diagnostics)
      : model_(model), file_(file), diagnostics_(diagnostics), tokens_(file.tokens) {
    // A remark that is never closed hides the end of the text: what is missing there has no message of its
    // own.
    for (const Diagnostic& diagnostic : diagnostics.All()) {
      if (diagnostic.where.file == file.source.get() && diagnostic.code == Code::UnterminatedRemark) {
        isEndHidden_ = true;
      }
    }
  }

  // syntax = schema_decl { schema_decl } .
  void Syntax() {
    bool found = false;
    while (Kind() != TokenKind::EndOfFile) {
      try {
        if (Kind() != TokenKind::Schema) Fail("SCHEMA");
        found = true;
        SchemaDecl();
      } catch (const SyntaxError&) {
        while (Kind() != TokenKind::EndOfFile && Kind() != TokenKind::Schema) ++at_;
        found = true;
      }
    }
    if (!found && !isEndHidden_) diagnostics_.Report(Code::NoSchema, Here(), "the file holds no schema");
  }

 private:
  // ---- looking, consuming -----------------------------------------------------------------------

  TokenKind Kind(std::size_t ahead = 0) const {
    return tokens_[std::min(at_ + ahead, tokens_.size() - 1)].kind;
  }

  Location PlaceOf(const Token& token) const { return {file_.source.get(), token.offset, token.length}; }
  Location Here() const { return PlaceOf(tokens_[at_]); }
  std::uint32_t Index() const { return static_cast<std::uint32_t>(at_); }

  std::string_view TextOf(const Token& token) const { return file_.source->Text(token.offset, token.length); }

  // Consumes the token if it is of the kind.
  bool Get(TokenKind kind) {
    if (Kind() != kind) return false;
    ++at_;
    return true;
  }

  // Consumes a token of the kind or reports what stands there instead.
  void Expect(TokenKind kind) {
    if (!Get(kind)) Fail(DescribeKind(kind));
  }

  std::string Found() const {
    const Token& token = tokens_[at_];
    if (token.kind == TokenKind::EndOfFile) return DescribeKind(token.kind);
    const std::string_view text = TextOf(token);
    return text.size() > 40 ? DescribeKind(token.kind) : "'" + std::string(text) + "'";
  }

  // Reports what was expected. What is missing before a line end is reported there, not at the next line.
  [[noreturn]] void Fail(const std::string& expected) {
    if (IsHidden()) throw SyntaxError();
    Location where = HereOrAtEnd();
    std::string text = "expected " + expected + ", found " + Found();
    if (expected == "';'" && at_ > 0) {
      const Token& before = tokens_[at_ - 1];
      const std::uint32_t end = before.offset + before.length;
      const SourceFile& source = *file_.source;
      if (source.PositionOf(end).line != source.PositionOf(tokens_[at_].offset).line) {
        where = {&source, end, 1};
        text = "expected ';' after '" + std::string(TextOf(before)) + "'";
      }
    }
    diagnostics_.Report(Code::Expected, where, text);
    throw SyntaxError();
  }

  bool IsHidden() const { return isEndHidden_ && Kind() == TokenKind::EndOfFile; }

  // The end of the file is shown behind the last token rather than behind whatever blank lines follow.
  Location HereOrAtEnd() const {
    if (Kind() != TokenKind::EndOfFile || at_ == 0) return Here();
    const Token& last = tokens_[at_ - 1];
    return {file_.source.get(), last.offset + last.length, 1};
  }

  // Reports a block that the text leaves open.
  [[noreturn]] void FailNotClosed(const Location& begin, const std::string& what, TokenKind end) {
    if (IsHidden()) throw SyntaxError();
    diagnostics_.Report(Code::NotClosed, HereOrAtEnd(),
                        "expected " + DescribeKind(end) + ", found " + Found(), begin, what + " begins here");
    throw SyntaxError();
  }

  static std::string LowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return lower;
  }

  // Consumes a name. A reserved word in the place of a name is reported, and taken for the name it was meant
  // to be.
  Name ExpectName(const char* what) {
    if (Kind() != TokenKind::Identifier) {
      if (!IsReserved(Kind())) Fail(what);
      diagnostics_.Report(Code::ReservedWord, Here(),
                          Found() + " is a reserved word of EXPRESS and no name: expected " + what);
      if (!MayFollowName(Kind(1))) throw SyntaxError();
    }
    return TakeName();
  }

  static bool MayFollowName(TokenKind kind) {
    switch (kind) {
      case TokenKind::Abstract:
      case TokenKind::Colon:
      case TokenKind::Comma:
      case TokenKind::Dot:
      case TokenKind::Equal:
      case TokenKind::For:
      case TokenKind::RightParenthesis:
      case TokenKind::Semicolon:
      case TokenKind::Subtype:
      case TokenKind::Supertype:
        return true;
      default:
        return false;
    }
  }

  Name TakeName() {
    Name name{LowerCase(TextOf(tokens_[at_])), Here()};
    ++at_;
    return name;
  }

  // ---- recovery ---------------------------------------------------------------------------------

  // To the next declaration, or the end of the schema.
  void SkipToDeclaration() {
    while (Kind() != TokenKind::EndOfFile && Kind() != TokenKind::EndSchema && Kind() != TokenKind::Schema) {
      if (StartsDeclaration(Kind())) return;
      const bool isEnd = EndsDeclaration(Kind()) && Kind(1) == TokenKind::Semicolon;
      at_ += isEnd ? 2 : 1;
      if (isEnd) return;
    }
  }

  static bool EndsDeclaration(TokenKind kind) {
    switch (kind) {
      case TokenKind::EndConstant:
      case TokenKind::EndEntity:
      case TokenKind::EndFunction:
      case TokenKind::EndProcedure:
      case TokenKind::EndRule:
      case TokenKind::EndSubtypeConstraint:
      case TokenKind::EndType:
        return true;
      default:
        return false;
    }
  }

  // Within an entity: behind the next ';', or to a word that begins a section or ends the entity.
  void SkipToNextAttribute() {
    while (Kind() != TokenKind::EndOfFile && !EndsAttributes(Kind()) && Kind() != TokenKind::Entity) {
      if (Get(TokenKind::Semicolon)) return;
      ++at_;
    }
  }

  static bool EndsAttributes(TokenKind kind) {
    switch (kind) {
      case TokenKind::Derive:
      case TokenKind::Inverse:
      case TokenKind::Where:
      case TokenKind::EndEntity:
      case TokenKind::EndType:
      case TokenKind::EndSchema:
      case TokenKind::Type:
      case TokenKind::Entity:
      case TokenKind::Function:
      case TokenKind::Procedure:
      case TokenKind::Rule:
      case TokenKind::EndOfFile:
        return true;
      default:
        return false;
    }
  }

  // ---- schema -----------------------------------------------------------------------------------

  // schema_decl = SCHEMA schema_id [ schema_version_id ] ';' schema_body END_SCHEMA ';' .
  void SchemaDecl() {
    const Location begin = Here();
    Expect(TokenKind::Schema);
    model_.schemas.push_back(std::make_unique<SchemaDeclaration>());
    schema_ = model_.schemas.back().get();
    schema_->name = SchemaName();
    if (Kind() == TokenKind::StringLiteral || Kind() == TokenKind::EncodedStringLiteral) {
      const std::string_view text = TextOf(tokens_[at_++]);
      schema_->version = std::string(text.substr(1, text.size() - std::min<std::size_t>(text.size(), 2)));
    }
    try {
      Expect(TokenKind::Semicolon);
    } catch (const SyntaxError&) {
      SkipToDeclaration();
    }
    SchemaBody();
    if (Kind() != TokenKind::EndSchema) {
      FailNotClosed(begin, "schema '" + schema_->name.text + "'", TokenKind::EndSchema);
    }
    ++at_;
    Expect(TokenKind::Semicolon);
  }

  Name SchemaName() {
    const bool isAlone = Kind(1) == TokenKind::Semicolon || Kind(1) == TokenKind::StringLiteral;
    if (!IsReserved(Kind()) || !isAlone) return ExpectName("the schema's name");
    diagnostics_.Report(Code::ReservedSchemaName, Here(),
                        "the schema's name " + Found() + " is a reserved word");
    return TakeName();
  }

  // schema_body = { interface_specification } [ constant_decl ] { declaration | rule_decl } .
  void SchemaBody() {
    while (Kind() != TokenKind::EndSchema && Kind() != TokenKind::EndOfFile && Kind() != TokenKind::Schema) {
      const std::size_t start = at_;
      try {
        Declaration();
      } catch (const SyntaxError&) {
        if (at_ == start) ++at_;
        SkipToDeclaration();
      }
    }
  }

  // declaration = entity_decl | function_decl | procedure_decl | subtype_constraint_decl | type_decl .
  void Declaration() {
    switch (Kind()) {
      case TokenKind::Use:
      case TokenKind::Reference:
        return InterfaceSpecification();
      case TokenKind::Constant:
        return ConstantDecl();
      case TokenKind::Type:
        return TypeDecl();
      case TokenKind::Entity:
        return EntityDecl();
      case TokenKind::SubtypeConstraint:
        return SubtypeConstraintDecl();
      case TokenKind::Function:
        return AlgorithmDecl(DeclarationKind::Function);
      case TokenKind::Procedure:
        return AlgorithmDecl(DeclarationKind::Procedure);
      case TokenKind::Rule:
        return AlgorithmDecl(DeclarationKind::Rule);
      default:
        Fail("a declaration or END_SCHEMA");
    }
  }

  // use_clause = USE FROM schema_ref [ '(' named_type_or_rename { ',' named_type_or_rename } ')' ] ';' .
  // reference_clause = REFERENCE FROM schema_ref [ '(' resource_or_rename { ',' resource_or_rename } ')' ]
  // ';' .
  void InterfaceSpecification() {
    Interface interface;
    interface.isUse = Kind() == TokenKind::Use;
    ++at_;
    Expect(TokenKind::From);
    interface.schemaName = ExpectName("the name of a schema");
    if (Get(TokenKind::LeftParenthesis)) {
      do {
        InterfaceItem item;
        item.name = ExpectName("the name of a declaration");
        item.alias = Get(TokenKind::As) ? ExpectName("the new name") : item.name;
        interface.items.push_back(std::move(item));
      } while (Get(TokenKind::Comma));
      Expect(TokenKind::RightParenthesis);
    }
    schema_->interfaces.push_back(std::move(interface));
    Expect(TokenKind::Semicolon);
  }

  // constant_decl = CONSTANT constant_body { constant_body } END_CONSTANT ';' .
  // constant_body = constant_id ':' instantiable_type ':=' expression ';' .
  void ConstantDecl() {
    const Location begin = Here();
    ++at_;
    while (Kind() == TokenKind::Identifier || IsReserved(Kind())) {
      if (Kind() == TokenKind::EndConstant || StartsDeclaration(Kind()) || Kind() == TokenKind::EndSchema)
        break;
      auto constant = std::make_unique<Constant>(ExpectName("a constant's name"), schema_);
      Expect(TokenKind::Colon);
      constant->type = ParameterType();
      Expect(TokenKind::Assign);
      constant->expression = Expression(TokenKind::Semicolon);
      Expect(TokenKind::Semicolon);
      schema_->declarations.push_back(std::move(constant));
    }
    if (Kind() != TokenKind::EndConstant) FailNotClosed(begin, "CONSTANT", TokenKind::EndConstant);
    ++at_;
    Expect(TokenKind::Semicolon);
  }

  // ---- types ------------------------------------------------------------------------------------

  // type_decl = TYPE type_id '=' underlying_type ';' [ where_clause ] END_TYPE ';' .
  void TypeDecl() {
    const Location begin = Here();
    ++at_;
    auto type = std::make_unique<DefinedType>(ExpectName("the type's name"), schema_);
    DefinedType& declared = *type;
    Expect(TokenKind::Equal);
    declared.underlying = UnderlyingType();
    schema_->declarations.push_back(std::move(type));
    Expect(TokenKind::Semicolon);
    if (Get(TokenKind::Where)) declared.where = Rules();
    if (Kind() != TokenKind::EndType)
      FailNotClosed(begin, "type '" + declared.name.text + "'", TokenKind::EndType);
    ++at_;
    Expect(TokenKind::Semicolon);
  }

  // underlying_type = concrete_types | constructed_types .
  TypeExpression UnderlyingType() {
    switch (Kind()) {
      case TokenKind::Enumeration:
      case TokenKind::Select:
      case TokenKind::Extensible:
        return ConstructedType();
      default:
        return ParameterType();
    }
  }

  // enumeration_type = [ EXTENSIBLE ] ENUMERATION [ ( OF enumeration_items ) | enumeration_extension ] .
  // select_type = [ EXTENSIBLE [ GENERIC_ENTITY ] ] SELECT [ select_list | select_extension ] .
  TypeExpression ConstructedType() {
    TypeExpression type;
    type.where = Here();
    type.extensible = Get(TokenKind::Extensible);
    type.genericEntity = Get(TokenKind::GenericEntity);
    if (!type.genericEntity && Get(TokenKind::Enumeration)) {
      type.kind = TypeKind::Enumeration;
      if (Get(TokenKind::Of)) {
        type.items = Items("an enumeration item");
      } else if (!Extension(type, "an enumeration item") && !type.extensible) {
        Fail("OF");
      }
      return type;
    }
    if (!Get(TokenKind::Select)) Fail(type.genericEntity ? "SELECT" : "ENUMERATION or SELECT");
    type.kind = TypeKind::Select;
    if (Kind() == TokenKind::LeftParenthesis) {
      type.items = Items("the name of a type or entity");
    } else if (!Extension(type, "the name of a type or entity") && !type.extensible) {
      Fail("'('");
    }
    return type;
  }

  // extension = BASED_ON type_ref [ WITH list ] .
  bool Extension(TypeExpression& type, const char* itemName) {
    if (!Get(TokenKind::BasedOn)) return false;
    type.basedOn = ExpectName("the name of an extensible type");
    if (Get(TokenKind::With)) type.items = Items(itemName);
    return true;
  }

  // '(' name { ',' name } ')' .
  std::vector<TypeItem> Items(const char* itemName) {
    std::vector<TypeItem> items;
    Expect(TokenKind::LeftParenthesis);
    do {
      items.push_back({ExpectName(itemName), nullptr});
    } while (Get(TokenKind::Comma));
    Expect(TokenKind::RightParenthesis);
    return items;
  }

  // parameter_type = generalized_types | named_types | simple_types .
  TypeExpression ParameterType() {
    TypeExpression type;
    TypeExpression* at = &type;
    for (int depth = 0; AggregateType(*at); ++depth) {
      if (depth == kDeepest) {
        diagnostics_.Report(Code::TooDeep, Here(), "aggregates are nested deeper than 200 levels");
        throw SyntaxError();
      }
      at->element = std::make_shared<TypeExpression>();
      at = at->element.get();
    }
    SimpleType(*at);
    return type;
  }

  // aggregation_types = array_type | bag_type | list_type | set_type ; with general and conformant forms of
  // each.
  bool AggregateType(TypeExpression& type) {
    type.where = Here();
    switch (Kind()) {
      case TokenKind::Array:
        type.kind = TypeKind::Array;
        break;
      case TokenKind::Bag:
        type.kind = TypeKind::Bag;
        break;
      case TokenKind::List:
        type.kind = TypeKind::List;
        break;
      case TokenKind::Set:
        type.kind = TypeKind::Set;
        break;
      case TokenKind::Aggregate:
        type.kind = TypeKind::Aggregate;
        break;
      default:
        return false;
    }
    ++at_;
    if (type.kind == TypeKind::Aggregate) {
      TypeLabel();
    } else if (Kind() == TokenKind::LeftBracket) {
      type.hasBounds = true;
      BoundSpec(type.lower, type.upper);
    }
    Expect(TokenKind::Of);
    type.optionalElements = type.kind == TypeKind::Array && Get(TokenKind::Optional);
    type.uniqueElements =
        (type.kind == TypeKind::Array || type.kind == TypeKind::List) && Get(TokenKind::Unique);
    return true;
  }

  // [ ':' type_label ]
  void TypeLabel() {
    if (Get(TokenKind::Colon)) ExpectName("a type label");
  }

  // bound_spec = '[' bound_1 ':' bound_2 ']' .
  void BoundSpec(TokenRange& lower, TokenRange& upper) {
    Expect(TokenKind::LeftBracket);
    lower = Expression(TokenKind::Colon);
    Expect(TokenKind::Colon);
    upper = Expression(TokenKind::RightBracket);
    Expect(TokenKind::RightBracket);
  }

  // simple_types, named_types, generic_type, generic_entity_type.
  void SimpleType(TypeExpression& type) {
    type.where = Here();
    switch (Kind()) {
      case TokenKind::Integer:
        type.kind = TypeKind::Integer;
        break;
      case TokenKind::Number:
        type.kind = TypeKind::Number;
        break;
      case TokenKind::Boolean:
        type.kind = TypeKind::Boolean;
        break;
      case TokenKind::Logical:
        type.kind = TypeKind::Logical;
        break;
      case TokenKind::Real:
        type.kind = TypeKind::Real;
        break;
      case TokenKind::String:
        type.kind = TypeKind::String;
        break;
      case TokenKind::Binary:
        type.kind = TypeKind::Binary;
        break;
      case TokenKind::Generic:
        type.kind = TypeKind::Generic;
        break;
      case TokenKind::GenericEntity:
        type.kind = TypeKind::GenericEntity;
        break;
      case TokenKind::Enumeration:
      case TokenKind::Select:
      case TokenKind::Extensible:
        Fail("the name of a type (an enumeration or select is declared as a TYPE of its own)");
      default:
        if (IsReserved(Kind()) || Kind() != TokenKind::Identifier) Fail("a type");
        type.kind = TypeKind::Named;
        type.name = ExpectName("a type");
        return;
    }
    ++at_;
    if (type.kind == TypeKind::Generic || type.kind == TypeKind::GenericEntity) TypeLabel();
    const bool hasWidth =
        type.kind == TypeKind::Real || type.kind == TypeKind::String || type.kind == TypeKind::Binary;
    if (hasWidth && Get(TokenKind::LeftParenthesis)) {
      type.width = Expression(TokenKind::RightParenthesis);
      Expect(TokenKind::RightParenthesis);
      type.fixed = type.kind != TypeKind::Real && Get(TokenKind::Fixed);
    }
  }

  // ---- entity -----------------------------------------------------------------------------------

  // entity_decl = entity_head entity_body END_ENTITY ';' .
  void EntityDecl() {
    const Location begin = Here();
    ++at_;
    auto owned = std::make_unique<Entity>(ExpectName("the entity's name"), schema_);
    entity_ = owned.get();
    schema_->declarations.push_back(std::move(owned));
    EntityHead();
    EntityBody();
    if (Kind() != TokenKind::EndEntity) {
      FailNotClosed(begin, "entity '" + entity_->name.text + "'", TokenKind::EndEntity);
    }
    ++at_;
    Expect(TokenKind::Semicolon);
  }

  // entity_head = ENTITY entity_id subsuper ';' .
  void EntityHead() {
    try {
      Subsuper();
      Expect(TokenKind::Semicolon);
    } catch (const SyntaxError&) {
      // A missing ';' before an attribute costs nothing more; anything else is passed over.
      const bool beforeAttribute =
          Kind() == TokenKind::Identifier && (Kind(1) == TokenKind::Colon || Kind(1) == TokenKind::Comma);
      if (!beforeAttribute) SkipToNextAttribute();
    }
  }

  // subsuper = [ supertype_constraint ] [ subtype_declaration ] .
  // supertype_constraint = abstract_entity_declaration | abstract_supertype_declaration | supertype_rule .
  void Subsuper() {
    entity_->isAbstract = Get(TokenKind::Abstract);
    if (Get(TokenKind::Supertype)) {
      if (Get(TokenKind::Of)) {
        entity_->supertypeExpression = std::make_unique<SupertypeExpression>(ParenthesisedSupertypes());
      } else if (!entity_->isAbstract) {
        Fail("OF");
      }
    }
    // subtype_declaration = SUBTYPE OF '(' entity_ref { ',' entity_ref } ')' .
    if (Get(TokenKind::Subtype)) {
      Expect(TokenKind::Of);
      Expect(TokenKind::LeftParenthesis);
      do {
        entity_->supertypeNames.push_back(ExpectName("the name of a supertype"));
      } while (Get(TokenKind::Comma));
      Expect(TokenKind::RightParenthesis);
    }
  }

  SupertypeExpression ParenthesisedSupertypes() {
    Expect(TokenKind::LeftParenthesis);
    SupertypeExpression expression = SupertypeExpr(0);
    Expect(TokenKind::RightParenthesis);
    return expression;
  }

  // supertype_expression = supertype_factor { ANDOR supertype_factor } .
  SupertypeExpression SupertypeExpr(int depth) {
    return Combined(SupertypeExpression::Kind::AndOr, TokenKind::Andor,
                    [&] { return SupertypeFactor(depth); });
  }

  // supertype_factor = supertype_term { AND supertype_term } .
  SupertypeExpression SupertypeFactor(int depth) {
    return Combined(SupertypeExpression::Kind::And, TokenKind::And, [&] { return SupertypeTerm(depth); });
  }

  template <class Operand>
  SupertypeExpression Combined(SupertypeExpression::Kind kind, TokenKind separator, Operand operand) {
    SupertypeExpression first = operand();
    if (Kind() != separator) return first;
    SupertypeExpression all;
    all.kind = kind;
    all.operands.push_back(std::move(first));
    while (Get(separator)) all.operands.push_back(operand());
    return all;
  }

  // supertype_term = entity_ref | one_of | '(' supertype_expression ')' .
  SupertypeExpression SupertypeTerm(int depth) {
    if (depth == kDeepest) {
      diagnostics_.Report(Code::TooDeep, Here(), "supertype expressions are nested deeper than 200 levels");
      throw SyntaxError();
    }
    SupertypeExpression term;
    if (Get(TokenKind::Oneof)) {
      term.kind = SupertypeExpression::Kind::OneOf;
      Expect(TokenKind::LeftParenthesis);
      do {
        term.operands.push_back(SupertypeExpr(depth + 1));
      } while (Get(TokenKind::Comma));
      Expect(TokenKind::RightParenthesis);
    } else if (Get(TokenKind::LeftParenthesis)) {
      term = SupertypeExpr(depth + 1);
      Expect(TokenKind::RightParenthesis);
    } else {
      term.name = ExpectName("the name of a subtype");
    }
    return term;
  }

  // entity_body = { explicit_attr } [ derive_clause ] [ inverse_clause ] [ unique_clause ] [ where_clause ] .
  void EntityBody() {
    while (StartOfAttribute()) Recovering([&] { ExplicitAttr(); });
    if (Get(TokenKind::Derive)) {
      while (StartOfAttribute()) Recovering([&] { DerivedAttr(); });
    }
    if (Get(TokenKind::Inverse)) {
      while (StartOfAttribute()) Recovering([&] { InverseAttr(); });
    }
    if (Get(TokenKind::Unique)) {
      while (StartOfAttribute()) Recovering([&] { UniqueRules(); });
    }
    if (Get(TokenKind::Where)) entity_->where = Rules();
  }

  // A word of the language where an attribute is expected: let ExpectName say that it is no name.
  bool StartOfAttribute() const {
    if (Kind() == TokenKind::Identifier || Kind() == TokenKind::Self) return true;
    return IsReserved(Kind()) && (Kind(1) == TokenKind::Colon || Kind(1) == TokenKind::Comma);
  }

  template <class Parse>
  void Recovering(Parse parse) {
    const std::size_t start = at_;
    try {
      parse();
    } catch (const SyntaxError&) {
      if (at_ == start && !EndsAttributes(Kind())) ++at_;
      SkipToNextAttribute();
    }
  }

  // explicit_attr = attribute_decl { ',' attribute_decl } ':' [ OPTIONAL ] parameter_type ';' .
  void ExplicitAttr() {
    const std::size_t first = entity_->attributes.size();
    do {
      entity_->attributes.push_back(AttributeDecl(AttributeKind::Explicit));
    } while (Get(TokenKind::Comma));
    Expect(TokenKind::Colon);
    const bool optional = Get(TokenKind::Optional);
    const auto type = std::make_shared<TypeExpression>(ParameterType());
    for (std::size_t i = first; i < entity_->attributes.size(); ++i) {
      entity_->attributes[i].optional = optional;
      entity_->attributes[i].type = type;
    }
    Expect(TokenKind::Semicolon);
  }

  // derived_attr = attribute_decl ':' parameter_type ':=' expression ';' .
  void DerivedAttr() {
    entity_->attributes.push_back(AttributeDecl(AttributeKind::Derived));
    Attribute& attribute = entity_->attributes.back();
    Expect(TokenKind::Colon);
    attribute.type = std::make_shared<TypeExpression>(ParameterType());
    if (Kind() == TokenKind::Semicolon) {
      diagnostics_.Report(Code::NoExpression, Here(),
                          "derived attribute '" + attribute.name.text + "' has no expression: expected ':='");
      throw SyntaxError();
    }
    Expect(TokenKind::Assign);
    attribute.expression = Expression(TokenKind::Semicolon);
    Expect(TokenKind::Semicolon);
  }

  // inverse_attr = attribute_decl ':' [ ( SET | BAG ) [ bound_spec ] OF ] entity_ref FOR [ entity_ref '.' ]
  //                attribute_ref ';' .
  void InverseAttr() {
    entity_->attributes.push_back(AttributeDecl(AttributeKind::Inverse));
    Attribute& attribute = entity_->attributes.back();
    Expect(TokenKind::Colon);
    if (Kind() == TokenKind::Set || Kind() == TokenKind::Bag) {
      attribute.inverseKind = Kind() == TokenKind::Set ? TypeKind::Set : TypeKind::Bag;
      ++at_;
      if (Kind() == TokenKind::LeftBracket) {
        attribute.inverseHasBounds = true;
        BoundSpec(attribute.inverseLower, attribute.inverseUpper);
      }
      Expect(TokenKind::Of);
    }
    attribute.inverseEntity = ExpectName("the name of an entity");
    Expect(TokenKind::For);
    attribute.inverseAttribute = ExpectName("the name of an attribute");
    if (Get(TokenKind::Dot)) {
      attribute.inverseGroup = std::move(attribute.inverseAttribute);
      attribute.inverseAttribute = ExpectName("the name of an attribute");
    }
    Expect(TokenKind::Semicolon);
  }

  // attribute_decl = attribute_id | redeclared_attribute .
  // redeclared_attribute = SELF '\' entity_ref '.' attribute_ref [ RENAMED attribute_id ] .
  Attribute AttributeDecl(AttributeKind kind) {
    Attribute attribute;
    attribute.kind = kind;
    attribute.owner = entity_;
    if (!Get(TokenKind::Self)) {
      attribute.name = ExpectName("the name of an attribute");
      return attribute;
    }
    attribute.redeclared = true;
    Expect(TokenKind::Backslash);
    attribute.redeclaredEntity = ExpectName("the name of a supertype");
    Expect(TokenKind::Dot);
    attribute.redeclaredAttribute = ExpectName("the name of an attribute");
    attribute.renamed = Get(TokenKind::Renamed);
    attribute.name = attribute.renamed ? ExpectName("the new name") : attribute.redeclaredAttribute;
    return attribute;
  }

  // unique_rule = [ rule_label_id ':' ] referenced_attribute { ',' referenced_attribute } ';' .
  void UniqueRules() {
    UniqueRule rule;
    if (Kind(1) == TokenKind::Colon) {
      rule.label = ExpectName("a label");
      ++at_;
    }
    do {
      const std::uint32_t begin = Index();
      if (Get(TokenKind::Self)) {
        Expect(TokenKind::Backslash);
        ExpectName("the name of a supertype");
        Expect(TokenKind::Dot);
      }
      ExpectName("the name of an attribute");
      rule.attributes.push_back({begin, Index()});
    } while (Get(TokenKind::Comma));
    Expect(TokenKind::Semicolon);
    entity_->unique.push_back(std::move(rule));
  }

  // where_clause = WHERE domain_rule ';' { domain_rule ';' } .
  // domain_rule = [ rule_label_id ':' ] expression .
  std::vector<LabelledRule> Rules() {
    std::vector<LabelledRule> rules;
    while (!ClosesBlock(Kind()) && !StartsDeclaration(Kind()) && Kind() != TokenKind::EndOfFile) {
      LabelledRule rule;
      if (Kind() == TokenKind::Identifier && Kind(1) == TokenKind::Colon) {
        rule.label = ExpectName("a label");
        ++at_;
      }
      rule.tokens = Expression(TokenKind::Semicolon);
      Expect(TokenKind::Semicolon);
      rules.push_back(std::move(rule));
    }
    return rules;
  }

  // ---- constraints ------------------------------------------------------------------------------

  // subtype_constraint_decl = SUBTYPE_CONSTRAINT subtype_constraint_id FOR entity_ref ';'
  // subtype_constraint_body
  //                           END_SUBTYPE_CONSTRAINT ';' .
  // subtype_constraint_body = [ ABSTRACT SUPERTYPE ';' ] [ TOTAL_OVER '(' entity_ref { ',' entity_ref } ')'
  // ';' ]
  //                           [ supertype_expression ';' ] .
  void SubtypeConstraintDecl() {
    const Location begin = Here();
    ++at_;
    auto owned = std::make_unique<SubtypeConstraint>(ExpectName("the constraint's name"), schema_);
    SubtypeConstraint& constraint = *owned;
    schema_->declarations.push_back(std::move(owned));
    Expect(TokenKind::For);
    constraint.entityName = ExpectName("the name of an entity");
    Expect(TokenKind::Semicolon);
    if (Get(TokenKind::Abstract)) {
      constraint.isAbstract = true;
      Expect(TokenKind::Supertype);
      Expect(TokenKind::Semicolon);
    }
    if (Get(TokenKind::TotalOver)) {
      Expect(TokenKind::LeftParenthesis);
      do {
        SupertypeExpression entity;
        entity.name = ExpectName("the name of a subtype");
        constraint.totalOver.push_back(std::move(entity));
      } while (Get(TokenKind::Comma));
      Expect(TokenKind::RightParenthesis);
      Expect(TokenKind::Semicolon);
    }
    const bool hasExpression =
        Kind() == TokenKind::Identifier || Kind() == TokenKind::Oneof || Kind() == TokenKind::LeftParenthesis;
    if (hasExpression) {
      constraint.expression = std::make_unique<SupertypeExpression>(SupertypeExpr(0));
      Expect(TokenKind::Semicolon);
    }
    if (Kind() != TokenKind::EndSubtypeConstraint) {
      FailNotClosed(begin, "subtype constraint '" + constraint.name.text + "'",
                    TokenKind::EndSubtypeConstraint);
    }
    ++at_;
    Expect(TokenKind::Semicolon);
  }

  // ---- expressions and algorithms ---------------------------------------------------------------

  // The tokens up to `end` outside of all brackets. At least one token; brackets match.
  TokenRange Expression(TokenKind end) {
    TokenRange range{Index(), Index()};
    std::vector<std::size_t> open;
    for (; !(open.empty() && Kind() == end); ++at_) {
      const TokenKind kind = Kind();
      if (kind == TokenKind::LeftParenthesis || kind == TokenKind::LeftBracket ||
          kind == TokenKind::LeftBrace) {
        open.push_back(at_);
      } else if (kind == TokenKind::RightParenthesis || kind == TokenKind::RightBracket ||
                 kind == TokenKind::RightBrace) {
        const TokenKind partner = open.empty() ? TokenKind::EndOfFile : Partner(tokens_[open.back()].kind);
        if (partner != kind) Fail(open.empty() ? DescribeKind(end) : DescribeKind(partner));
        open.pop_back();
      } else if (kind == TokenKind::Semicolon || kind == TokenKind::EndOfFile || ClosesBlock(kind) ||
                 OpensBlock(kind)) {
        FailExpression(open, range, end);
      }
    }
    range.end = Index();
    if (range.IsEmpty()) Fail("an expression");
    return range;
  }

  [[noreturn]] void FailExpression(const std::vector<std::size_t>& open, const TokenRange& range,
                                   TokenKind end) {
    if (!open.empty()) {
      const Token& bracket = tokens_[open.back()];
      diagnostics_.Report(Code::Expected, Here(),
                          "expected " + DescribeKind(Partner(bracket.kind)) + ", found " + Found(),
                          PlaceOf(bracket), "the bracket opened here");
      throw SyntaxError();
    }
    Fail(range.begin == Index() ? "an expression" : DescribeKind(end));
  }

  static TokenKind Partner(TokenKind opening) {
    switch (opening) {
      case TokenKind::LeftParenthesis:
        return TokenKind::RightParenthesis;
      case TokenKind::LeftBracket:
        return TokenKind::RightBracket;
      default:
        return TokenKind::RightBrace;
    }
  }

  // function_decl = FUNCTION function_id ... END_FUNCTION ';' ; likewise PROCEDURE and RULE.
  //
  // Passed over with a stack of the blocks that are open, so that an END_ word that fits none of them is
  // found.
  void AlgorithmDecl(DeclarationKind kind) {
    std::vector<std::size_t> open{at_};
    ++at_;
    auto algorithm = std::make_unique<Algorithm>(kind, ExpectName("a name"), schema_);
    algorithm->tokens.begin = Index();
    while (!open.empty()) {
      const TokenKind found = Kind();
      if (found == TokenKind::EndOfFile || found == TokenKind::Schema || found == TokenKind::EndSchema) {
        const Token& block = tokens_[open.back()];
        FailNotClosed(PlaceOf(block), DescribeKind(block.kind), EndOf(block.kind));
      }
      if (ClosesBlock(found)) {
        const Token& block = tokens_[open.back()];
        if (EndOf(block.kind) != found) {
          diagnostics_.Report(Code::WrongEnd, Here(),
                              "expected " + DescribeKind(EndOf(block.kind)) + ", found " + Found(),
                              PlaceOf(block), DescribeKind(block.kind) + " opened here");
          LeaveAlgorithm(EndOf(tokens_[open.front()].kind));
          break;
        }
        open.pop_back();
        if (open.empty()) break;
      } else if (OpensBlock(found)) {
        open.push_back(at_);
      }
      ++at_;
    }
    algorithm->tokens.end = Index();
    schema_->declarations.push_back(std::move(algorithm));
    ++at_;
    Expect(TokenKind::Semicolon);
  }

  // To the word that ends the algorithm; without one, to the next declaration.
  void LeaveAlgorithm(TokenKind end) {
    while (Kind() != end) {
      if (Kind() == TokenKind::EndOfFile || Kind() == TokenKind::EndSchema) throw SyntaxError();
      ++at_;
    }
  }

  Model& model_;
  Model::File& file_;
  Diagnostics& diagnostics_;
  const std::vector<Token>& tokens_;
  std::size_t at_ = 0;
  bool isEndHidden_ = false;
  SchemaDeclaration* schema_ = nullptr;
  Entity* entity_ = nullptr;
};

}  // namespace

void ParseFile(Model& model, SourceFile source, Diagnostics& diagnostics) {
  auto file = std::make_unique<Model::File>();
  file->source = std::make_unique<SourceFile>(std::move(source));
  file->tokens = Tokenize(*file->source, diagnostics);
  model.files.push_back(std::move(file));
  Parser(model, *model.files.back(), diagnostics).Syntax();
}

}  // namespace VELMAR::Express
