#include "Printer.h"

#include <algorithm>
#include <charconv>
#include <ostream>
#include <string_view>

namespace VELMAR::Express {
namespace {

const char* KindText(TypeKind kind) {
  switch (kind) {
    case TypeKind::Number:
      return "NUMBER";
    case TypeKind::Real:
      return "REAL";
    case TypeKind::Integer:
      return "INTEGER";
    case TypeKind::String:
      return "STRING";
    case TypeKind::Boolean:
      return "BOOLEAN";
    case TypeKind::Logical:
      return "LOGICAL";
    case TypeKind::Binary:
      return "BINARY";
    case TypeKind::Array:
      return "ARRAY";
    case TypeKind::Bag:
      return "BAG";
    case TypeKind::List:
      return "LIST";
    case TypeKind::Set:
      return "SET";
    case TypeKind::Aggregate:
      return "AGGREGATE";
    case TypeKind::Enumeration:
      return "ENUMERATION";
    case TypeKind::Select:
      return "SELECT";
    case TypeKind::Generic:
      return "GENERIC";
    case TypeKind::GenericEntity:
      return "GENERIC_ENTITY";
    case TypeKind::Named:
      return "";
  }
  return "";
}

// The shortest digits that give the value again, with the point that a real literal needs.
std::string RealText(double value) {
  char digits[64];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  std::string text(digits, end);
  if (text.find('.') != std::string::npos) return text;
  const std::size_t exponent = std::min(text.find('e'), text.size());
  return text.insert(exponent, ".0");
}

// Eight hexadecimal digits for each character of a UTF-8 text.
std::string EncodedText(const std::string& value) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string text = "\"";
  for (std::size_t at = 0; at < value.size();) {
    const unsigned char first = static_cast<unsigned char>(value[at++]);
    std::uint32_t character = first < 0x80   ? first
                              : first < 0xE0 ? first & 0x1F
                              : first < 0xF0 ? first & 0x0F
                                             : first & 0x07;
    for (; at < value.size() && (static_cast<unsigned char>(value[at]) & 0xC0) == 0x80; ++at) {
      character = character << 6 | (static_cast<unsigned char>(value[at]) & 0x3F);
    }
    for (int shift = 28; shift >= 0; shift -= 4) text += digits[character >> shift & 15];
  }
  return text + '"';
}

class ExpressionPrinter {
 public:
  // In lower case throughout and without type labels, as comments and messages show types; or canonical.
  explicit ExpressionPrinter(bool isLower) : isLower_(isLower) {}

  std::string Text() { return std::move(text_); }

  void Type(const TypeExpression& type) {
    const TypeExpression* at = &type;
    for (; IsAggregate(at->kind) && at->element; at = at->element.get()) {
      Word(KindText(at->kind));
      Label(*at);
      if (at->hasBounds) {
        text_ += ' ';
        Bounds(*at->lower, *at->upper);
      }
      Word(" OF ");
      if (at->optionalElements) Word("OPTIONAL ");
      if (at->uniqueElements) Word("UNIQUE ");
    }
    if (at->kind == TypeKind::Enumeration || at->kind == TypeKind::Select) return Constructed(*at);
    if (at->kind == TypeKind::Named) {
      text_ += at->name.text;
    } else {
      Word(KindText(at->kind));
    }
    Label(*at);
    if (at->width) {
      text_ += " (";
      Any(*at->width);
      text_ += ')';
    }
    if (at->fixed) Word(" FIXED");
  }

  void Bounds(const Expression& lower, const Expression& upper) {
    text_ += '[';
    Any(lower);
    text_ += " : ";
    Any(upper);
    text_ += ']';
  }

  void Any(const Expression& expression) {
    switch (expression.kind) {
      case ExpressionKind::Integer:
        text_ += std::to_string(static_cast<const IntegerLiteral&>(expression).value);
        break;
      case ExpressionKind::Real:
        text_ += RealText(static_cast<const RealLiteral&>(expression).value);
        break;
      case ExpressionKind::String:
        String(static_cast<const StringLiteral&>(expression));
        break;
      case ExpressionKind::Binary:
        text_ += '%' + static_cast<const BinaryLiteral&>(expression).bits;
        break;
      case ExpressionKind::Logical: {
        constexpr const char* texts[] = {"FALSE", "TRUE", "UNKNOWN"};
        Word(texts[static_cast<int>(static_cast<const LogicalLiteral&>(expression).value)]);
        break;
      }
      case ExpressionKind::Indeterminate:
        text_ += '?';
        break;
      case ExpressionKind::Self:
        Word("SELF");
        break;
      case ExpressionKind::BuiltinConstant:
        Word(BuiltinRowOf(static_cast<const BuiltinConstant&>(expression).builtin).name);
        break;
      case ExpressionKind::Name:
        text_ += static_cast<const NameReference&>(expression).name.text;
        break;
      case ExpressionKind::Call: {
        const auto& call = static_cast<const Call&>(expression);
        text_ += call.name.text;
        Arguments(call.arguments);
        break;
      }
      case ExpressionKind::BuiltinCall: {
        const auto& call = static_cast<const BuiltinCall&>(expression);
        Word(BuiltinRowOf(call.builtin).name);
        Arguments(call.arguments);
        break;
      }
      case ExpressionKind::Member: {
        const auto& member = static_cast<const Member&>(expression);
        Any(*member.operand);
        text_ += '.' + member.name.text;
        break;
      }
      case ExpressionKind::Group: {
        const auto& group = static_cast<const Group&>(expression);
        Any(*group.operand);
        text_ += '\\' + group.name.text;
        break;
      }
      case ExpressionKind::Index: {
        const auto& index = static_cast<const Index&>(expression);
        Any(*index.operand);
        if (index.last) {
          Bounds(*index.first, *index.last);
        } else {
          text_ += '[';
          Any(*index.first);
          text_ += ']';
        }
        break;
      }
      case ExpressionKind::Unary: {
        const auto& unary = static_cast<const Unary&>(expression);
        Word(OperatorRowOf(unary.op).text);
        if (unary.op == Operator::Not) text_ += ' ';
        Operand(*unary.operand, 6);
        break;
      }
      case ExpressionKind::Operation: {
        const auto& operation = static_cast<const Operation&>(expression);
        const OperatorRow& row = OperatorRowOf(operation.op);
        // Comparisons and powers do not chain; the others bind to the left.
        const bool chains = row.precedence == 2 || row.precedence == 3;
        Operand(*operation.left, chains ? row.precedence : row.precedence + 1);
        text_ += ' ';
        Word(row.text);
        text_ += ' ';
        Operand(*operation.right, row.precedence + 1);
        break;
      }
      case ExpressionKind::Interval: {
        const auto& interval = static_cast<const Interval&>(expression);
        text_ += '{';
        Operand(*interval.low, 2);
        text_ += std::string(" ") + OperatorRowOf(interval.lowOperator).text + ' ';
        Operand(*interval.item, 2);
        text_ += std::string(" ") + OperatorRowOf(interval.highOperator).text + ' ';
        Operand(*interval.high, 2);
        text_ += '}';
        break;
      }
      case ExpressionKind::Query: {
        const auto& query = static_cast<const Query&>(expression);
        Word("QUERY");
        text_ += " (" + query.variable->name.text + " <* ";
        Operand(*query.source, 2);
        text_ += " | ";
        Any(*query.condition);
        text_ += ')';
        break;
      }
      case ExpressionKind::Aggregate: {
        text_ += '[';
        const char* separator = "";
        for (const auto& element : static_cast<const AggregateInitializer&>(expression).elements) {
          text_ += separator;
          separator = ", ";
          Any(*element.value);
          if (!element.repetition) continue;
          text_ += " : ";
          Operand(*element.repetition, 2);
        }
        text_ += ']';
        break;
      }
    }
  }

  void Arguments(const std::vector<ExpressionPtr>& arguments) {
    text_ += isLower_ ? "(" : " (";
    const char* separator = "";
    for (const ExpressionPtr& argument : arguments) {
      text_ += separator;
      separator = ", ";
      Any(*argument);
    }
    text_ += ')';
  }

 private:
  void Word(std::string_view word) {
    for (const char c : word)
      text_ += isLower_ && c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  }

  void Label(const TypeExpression& type) {
    if (!isLower_ && !type.label.text.empty()) text_ += " : " + type.label.text;
  }

  void Constructed(const TypeExpression& type) {
    if (type.extensible) Word("EXTENSIBLE ");
    if (type.genericEntity) Word("GENERIC_ENTITY ");
    Word(KindText(type.kind));
    if (!type.basedOn.text.empty()) {
      Word(" BASED_ON ");
      text_ += type.basedOn.text;
    }
    if (type.items.empty()) return;
    if (!type.basedOn.text.empty()) {
      Word(" WITH");
    } else if (type.kind == TypeKind::Enumeration) {
      Word(" OF");
    }
    const char* separator = " (";
    for (const TypeItem& item : type.items) {
      text_ += separator + item.name.text;
      separator = ", ";
    }
    text_ += ')';
  }

  void String(const StringLiteral& literal) {
    if (literal.encoded) {
      text_ += EncodedText(literal.value);
      return;
    }
    text_ += '\'';
    for (const char c : literal.value) text_.append(c == '\'' ? 2 : 1, c);
    text_ += '\'';
  }

  static int Precedence(const Expression& expression) {
    if (expression.kind == ExpressionKind::Operation) {
      return OperatorRowOf(static_cast<const Operation&>(expression).op).precedence;
    }
    return expression.kind == ExpressionKind::Unary ? 5 : 6;
  }

  // In parentheses where the operand binds less closely than its place needs.
  void Operand(const Expression& operand, int least) {
    if (Precedence(operand) >= least) return Any(operand);
    text_ += '(';
    Any(operand);
    text_ += ')';
  }

  bool isLower_;
  std::string text_;
};

class Printer {
 public:
  explicit Printer(std::ostream& out) : out_(out) {}

  void Schema(const SchemaDeclaration& schema) {
    out_ << "SCHEMA " << schema.name.text;
    if (!schema.version.empty()) {
      out_ << ' ' << Text(StringLiteral({}, schema.version, schema.isVersionEncoded));
    }
    out_ << ";\n";
    for (const Interface& interface : schema.interfaces) InterfaceSpecification(interface);
    Declarations(schema.declarations);
    out_ << "\nEND_SCHEMA;\n";
  }

 private:
  static std::string Text(const Expression& expression) { return ExpressionText(expression); }
  static std::string Text(const TypeExpression& type) {
    ExpressionPrinter printer(false);
    printer.Type(type);
    return printer.Text();
  }

  std::ostream& Line() { return out_ << std::string(static_cast<std::size_t>(2 * level_), ' '); }

  void InterfaceSpecification(const Interface& interface) {
    out_ << '\n' << (interface.isUse ? "USE" : "REFERENCE") << " FROM " << interface.schemaName.text;
    const char* separator = "\n  (";
    for (const InterfaceItem& item : interface.items) {
      out_ << separator << item.name.text;
      separator = ",\n   ";
      if (item.alias.text != item.name.text) out_ << " AS " << item.alias.text;
    }
    out_ << (interface.items.empty() ? ";\n" : ");\n");
  }

  void Declarations(const std::vector<std::unique_ptr<Declaration>>& declarations) {
    bool inConstants = false;
    for (const auto& declaration : declarations) {
      const bool isConstant = declaration->kind == DeclarationKind::Constant;
      if (inConstants && !isConstant) Line() << "END_CONSTANT;\n";
      if (!inConstants || !isConstant) out_ << '\n';
      if (!inConstants && isConstant) Line() << "CONSTANT\n";
      inConstants = isConstant;
      Any(*declaration);
    }
    if (inConstants) Line() << "END_CONSTANT;\n";
  }

  void Any(const Declaration& declaration) {
    switch (declaration.kind) {
      case DeclarationKind::Type:
        return Type(static_cast<const DefinedType&>(declaration));
      case DeclarationKind::Entity:
        return EntityDecl(static_cast<const Entity&>(declaration));
      case DeclarationKind::Constant: {
        const auto& constant = static_cast<const Constant&>(declaration);
        Line() << "  " << constant.name.text << " : " << Text(constant.type)
               << " := " << Text(*constant.expression) << ";\n";
        return;
      }
      case DeclarationKind::SubtypeConstraint:
        return Constraint(static_cast<const SubtypeConstraint&>(declaration));
      case DeclarationKind::Function:
      case DeclarationKind::Procedure:
      case DeclarationKind::Rule:
        return AlgorithmDecl(static_cast<const Algorithm&>(declaration));
      case DeclarationKind::Variable:
        return;
    }
  }

  void Type(const DefinedType& type) {
    Line() << "TYPE " << type.name.text << " = " << Text(type.underlying) << ";\n";
    Rules(type.where);
    Line() << "END_TYPE;\n";
  }

  void Rules(const std::vector<LabelledRule>& rules) {
    if (rules.empty()) return;
    Line() << "WHERE\n";
    for (const LabelledRule& rule : rules) {
      Line() << "  ";
      if (!rule.label.text.empty()) out_ << rule.label.text << " : ";
      out_ << Text(*rule.expression) << ";\n";
    }
  }

  void EntityDecl(const Entity& entity) {
    Line() << "ENTITY " << entity.name.text;
    if (entity.supertypeExpression) {
      out_ << '\n';
      Line() << (entity.isAbstract ? "  ABSTRACT SUPERTYPE OF (" : "  SUPERTYPE OF (")
             << Text(*entity.supertypeExpression, 0) << ')';
    } else if (entity.isAbstract) {
      out_ << (entity.isAbstractSupertype ? " ABSTRACT SUPERTYPE" : " ABSTRACT");
    }
    if (!entity.supertypeNames.empty()) {
      out_ << '\n';
      Line() << "  SUBTYPE OF";
      const char* separator = " (";
      for (const Name& name : entity.supertypeNames) {
        out_ << separator << name.text;
        separator = ", ";
      }
      out_ << ')';
    }
    out_ << ";\n";
    Attributes(entity, AttributeKind::Explicit, nullptr);
    Attributes(entity, AttributeKind::Derived, "DERIVE\n");
    Attributes(entity, AttributeKind::Inverse, "INVERSE\n");
    if (!entity.unique.empty()) Line() << "UNIQUE\n";
    for (const UniqueRule& rule : entity.unique) {
      Line() << "  ";
      if (!rule.label.text.empty()) out_ << rule.label.text << " : ";
      const char* separator = "";
      for (const UniqueAttribute& attribute : rule.attributes) {
        out_ << separator;
        separator = ", ";
        if (!attribute.group.text.empty()) out_ << "SELF\\" << attribute.group.text << '.';
        out_ << attribute.name.text;
      }
      out_ << ";\n";
    }
    Rules(entity.where);
    Line() << "END_ENTITY;\n";
  }

  void Attributes(const Entity& entity, AttributeKind kind, const char* title) {
    for (const Attribute& attribute : entity.attributes) {
      if (attribute.kind != kind) continue;
      if (title) Line() << title;
      title = nullptr;
      Line() << "  ";
      if (attribute.redeclared) {
        out_ << "SELF\\" << attribute.redeclaredEntity.text << '.' << attribute.redeclaredAttribute.text;
        if (attribute.renamed) out_ << " RENAMED " << attribute.name.text;
      } else {
        out_ << attribute.name.text;
      }
      out_ << " : ";
      if (attribute.optional) out_ << "OPTIONAL ";
      if (kind == AttributeKind::Inverse) {
        Inverse(attribute);
      } else {
        out_ << Text(*attribute.type);
      }
      if (kind == AttributeKind::Derived) out_ << " := " << Text(*attribute.expression);
      out_ << ";\n";
    }
  }

  void Inverse(const Attribute& attribute) {
    if (attribute.inverseKind != TypeKind::Named) {
      out_ << KindText(attribute.inverseKind);
      if (attribute.inverseHasBounds) {
        ExpressionPrinter bounds(false);
        bounds.Bounds(*attribute.inverseLower, *attribute.inverseUpper);
        out_ << ' ' << bounds.Text();
      }
      out_ << " OF ";
    }
    out_ << attribute.inverseEntity.text << " FOR ";
    if (!attribute.inverseGroup.text.empty()) out_ << attribute.inverseGroup.text << '.';
    out_ << attribute.inverseAttribute.text;
  }

  // `least` is how close the place binds: 0 for ANDOR, 1 for AND, 2 for a single operand.
  static std::string Text(const SupertypeExpression& expression, int least) {
    using Kind = SupertypeExpression::Kind;
    if (expression.kind == Kind::Entity) return expression.name.text;
    const int own = expression.kind == Kind::AndOr ? 0 : expression.kind == Kind::And ? 1 : 2;
    const char* between = own == 0 ? " ANDOR " : own == 1 ? " AND " : ", ";
    std::string text = own == 2 ? "ONEOF (" : own < least ? "(" : "";
    const char* separator = "";
    for (const SupertypeExpression& operand : expression.operands) {
      text += separator + Text(operand, own == 2 ? 0 : own + 1);
      separator = between;
    }
    return own == 2 || own < least ? text + ')' : text;
  }

  void Constraint(const SubtypeConstraint& constraint) {
    Line() << "SUBTYPE_CONSTRAINT " << constraint.name.text << " FOR " << constraint.entityName.text << ";\n";
    if (constraint.isAbstract) Line() << "  ABSTRACT SUPERTYPE;\n";
    if (!constraint.totalOver.empty()) {
      const char* separator = "  TOTAL_OVER (";
      Line();
      for (const SupertypeExpression& entity : constraint.totalOver) {
        out_ << separator << entity.name.text;
        separator = ", ";
      }
      out_ << ");\n";
    }
    if (constraint.expression) Line() << "  " << Text(*constraint.expression, 0) << ";\n";
    Line() << "END_SUBTYPE_CONSTRAINT;\n";
  }

  void AlgorithmDecl(const Algorithm& algorithm) {
    const char* word = algorithm.kind == DeclarationKind::Function    ? "FUNCTION"
                       : algorithm.kind == DeclarationKind::Procedure ? "PROCEDURE"
                                                                      : "RULE";
    Line() << word << ' ' << algorithm.name.text;
    const char* separator = " (";
    for (const auto& parameter : algorithm.parameters) {
      out_ << separator << (parameter->isVar ? "VAR " : "") << parameter->name.text << " : "
           << Text(*parameter->type);
      separator = "; ";
    }
    if (!algorithm.parameters.empty()) out_ << ')';
    if (algorithm.kind == DeclarationKind::Function) out_ << " : " << Text(algorithm.returnType);
    separator = " FOR (";
    for (const Name& name : algorithm.populations) {
      out_ << separator << name.text;
      separator = ", ";
    }
    if (!algorithm.populations.empty()) out_ << ')';
    out_ << ";\n";
    ++level_;
    Declarations(algorithm.declarations);
    if (!algorithm.declarations.empty()) out_ << '\n';
    if (!algorithm.locals.empty()) {
      Line() << "LOCAL\n";
      for (const auto& local : algorithm.locals) {
        Line() << "  " << local->name.text << " : " << Text(*local->type);
        if (local->initial) out_ << " := " << Text(*local->initial);
        out_ << ";\n";
      }
      Line() << "END_LOCAL;\n";
    }
    for (const StatementPtr& statement : algorithm.statements) Any(*statement);
    --level_;
    Rules(algorithm.where);
    Line() << "END_" << word << ";\n";
  }

  void Body(const std::vector<StatementPtr>& statements) {
    ++level_;
    for (const StatementPtr& statement : statements) Any(*statement);
    --level_;
  }

  void Any(const Statement& statement) {
    switch (statement.kind) {
      case StatementKind::Alias: {
        const auto& alias = static_cast<const AliasStatement&>(statement);
        Line() << "ALIAS " << alias.variable->name.text << " FOR " << Text(*alias.source) << ";\n";
        Body(alias.body);
        Line() << "END_ALIAS;\n";
        break;
      }
      case StatementKind::Assignment: {
        const auto& assignment = static_cast<const AssignmentStatement&>(statement);
        Line() << Text(*assignment.target) << " := " << Text(*assignment.value) << ";\n";
        break;
      }
      case StatementKind::Case:
        return Case(static_cast<const CaseStatement&>(statement));
      case StatementKind::Compound:
        Line() << "BEGIN\n";
        Body(static_cast<const CompoundStatement&>(statement).body);
        Line() << "END;\n";
        break;
      case StatementKind::Escape:
        Line() << "ESCAPE;\n";
        break;
      case StatementKind::If: {
        const auto& branch = static_cast<const IfStatement&>(statement);
        Line() << "IF " << Text(*branch.condition) << " THEN\n";
        Body(branch.thenBody);
        if (!branch.elseBody.empty()) {
          Line() << "ELSE\n";
          Body(branch.elseBody);
        }
        Line() << "END_IF;\n";
        break;
      }
      case StatementKind::Null:
        Line() << ";\n";
        break;
      case StatementKind::ProcedureCall: {
        const auto& call = static_cast<const ProcedureCallStatement&>(statement);
        Line() << (call.builtin == Builtin::kCount ? call.name.text : BuiltinRowOf(call.builtin).name);
        if (!call.arguments.empty()) {
          ExpressionPrinter arguments(false);
          arguments.Arguments(call.arguments);
          out_ << arguments.Text();
        }
        out_ << ";\n";
        break;
      }
      case StatementKind::Repeat:
        return Repeat(static_cast<const RepeatStatement&>(statement));
      case StatementKind::Return: {
        const auto& result = static_cast<const ReturnStatement&>(statement);
        Line() << "RETURN";
        if (result.value) out_ << " (" << Text(*result.value) << ')';
        out_ << ";\n";
        break;
      }
      case StatementKind::Skip:
        Line() << "SKIP;\n";
        break;
    }
  }

  void Case(const CaseStatement& statement) {
    Line() << "CASE " << Text(*statement.selector) << " OF\n";
    ++level_;
    for (const CaseStatement::Action& action : statement.actions) {
      const char* separator = "";
      Line();
      for (const ExpressionPtr& label : action.labels) {
        out_ << separator << Text(*label);
        separator = ", ";
      }
      out_ << " :\n";
      ++level_;
      Any(*action.statement);
      --level_;
    }
    if (statement.otherwise) {
      Line() << "OTHERWISE :\n";
      ++level_;
      Any(*statement.otherwise);
      --level_;
    }
    --level_;
    Line() << "END_CASE;\n";
  }

  void Repeat(const RepeatStatement& repeat) {
    Line() << "REPEAT";
    if (repeat.variable) {
      out_ << ' ' << repeat.variable->name.text << " := " << Text(*repeat.first) << " TO "
           << Text(*repeat.last);
      if (repeat.increment) out_ << " BY " << Text(*repeat.increment);
    }
    if (repeat.whileCondition) out_ << " WHILE " << Text(*repeat.whileCondition);
    if (repeat.untilCondition) out_ << " UNTIL " << Text(*repeat.untilCondition);
    out_ << ";\n";
    Body(repeat.body);
    Line() << "END_REPEAT;\n";
  }

  std::ostream& out_;
  int level_ = 0;
};

}  // namespace

void Print(const SchemaDeclaration& schema, std::ostream& out) { Printer(out).Schema(schema); }

void Print(const Model& model, std::ostream& out) {
  const char* separator = "";
  for (const auto& schema : model.schemas) {
    out << separator;
    separator = "\n";
    Print(*schema, out);
  }
}

std::string ExpressionText(const Expression& expression) {
  ExpressionPrinter printer(false);
  printer.Any(expression);
  return printer.Text();
}

std::string TypeText(const TypeExpression& type) {
  ExpressionPrinter printer(true);
  if (type.kind == TypeKind::Enumeration) return "enumeration";
  if (type.kind == TypeKind::Select) return "select";
  printer.Type(type);
  return printer.Text();
}

}  // namespace VELMAR::Express
