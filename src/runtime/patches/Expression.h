#pragma once
// The language of the "Mathematical Expression" patch: numbers, variables,
// + − × ÷ % ^, comparisons, && || !, ?:, true/false, PI and the usual
// functions. Trigonometric functions work in degrees. Every variable becomes
// a Number input of the patch, in order of first appearance.

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

namespace runtime {

class Expression {
public:
    // Null with an error naming the column on bad syntax.
    static std::optional<Expression> parse(const QString& text, QString* error = nullptr);

    const QStringList& variables() const { return variables_; }
    // `values` in the order of variables(); missing ones count as 0.
    double evaluate(const std::vector<double>& values) const;

    struct Node;

private:
    std::shared_ptr<const Node> root_;
    QStringList variables_;
    friend class ExpressionParser;
};

}  // namespace runtime
