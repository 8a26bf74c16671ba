#pragma once
// The executable tree a kernel compiles to. Variables live in numbered
// slots of a frame; functions cannot recurse, so each has slots of its own
// and a call needs no stack.

#include "runtime/kernel/KernelSampler.h"
#include "runtime/kernel/KernelValue.h"

#include <cmath>
#include <memory>
#include <vector>

namespace runtime::kernel {

struct Frame {
    Vec* slots = nullptr;
    const Sampler* samplers = nullptr;
    Vec destCoord;
    Vec result;
    // Loop iterations left for this pixel; a kernel that loops longer is
    // stopped rather than allowed to hang rendering.
    int loopBudget = 0;
    bool exhausted = false;
};

class Expr {
public:
    explicit Expr(Type type) : type_(type) {}
    virtual ~Expr() = default;
    Type type() const { return type_; }
    virtual Vec eval(Frame& frame) const = 0;

private:
    Type type_;
};
using ExprPtr = std::unique_ptr<Expr>;

// Something that can be assigned: a variable, some of its lanes, or one
// lane picked by an index.
class LValue : public Expr {
public:
    using Expr::Expr;
    virtual void store(Frame& frame, const Vec& value) const = 0;
    // The variable written to.
    virtual int slot() const = 0;
};

enum class Flow { Next, Break, Continue, Return };

class Stmt {
public:
    virtual ~Stmt() = default;
    virtual Flow exec(Frame& frame) const = 0;
};
using StmtPtr = std::unique_ptr<Stmt>;

// --- Expressions -----------------------------------------------------------

class Constant : public Expr {
public:
    Constant(Type type, Vec value) : Expr(type), value_(value) {}
    Vec eval(Frame&) const override { return value_; }
    const Vec& value() const { return value_; }

private:
    Vec value_;
};

class Variable : public LValue {
public:
    Variable(Type type, int slot) : LValue(type), slot_(slot) {}
    Vec eval(Frame& frame) const override { return frame.slots[slot_]; }
    void store(Frame& frame, const Vec& value) const override { frame.slots[slot_] = value; }
    int slot() const override { return slot_; }

private:
    int slot_;
};

// Lanes of a variable by name (.xy, .rgba) or constant index. A single lane
// reads as a scalar, spread over all four lanes.
class Swizzle : public LValue {
public:
    Swizzle(Type type, int slot, const int lanes[4], int count) : LValue(type), slot_(slot), count_(count)
    {
        for (int i = 0; i < 4; ++i) lanes_[i] = lanes[i];
    }
    Vec eval(Frame& frame) const override
    {
        const Vec& s = frame.slots[slot_];
        if (count_ == 1) return Vec::splat(s.v[lanes_[0]]);
        Vec out;
        for (int i = 0; i < count_; ++i) out.v[i] = s.v[lanes_[i]];
        return out;
    }
    void store(Frame& frame, const Vec& value) const override
    {
        Vec& s = frame.slots[slot_];
        for (int i = 0; i < count_; ++i) s.v[lanes_[i]] = value.v[i];
    }
    int slot() const override { return slot_; }

private:
    int slot_;
    int lanes_[4];
    int count_;
};

// Lanes of a value that is not a variable, e.g. sample(...).rgb.
class RvalueSwizzle : public Expr {
public:
    RvalueSwizzle(Type type, ExprPtr base, const int lanes[4], int count) : Expr(type), base_(std::move(base)), count_(count)
    {
        for (int i = 0; i < 4; ++i) lanes_[i] = lanes[i];
    }
    Vec eval(Frame& frame) const override
    {
        const Vec s = base_->eval(frame);
        if (count_ == 1) return Vec::splat(s.v[lanes_[0]]);
        Vec out;
        for (int i = 0; i < count_; ++i) out.v[i] = s.v[lanes_[i]];
        return out;
    }

private:
    ExprPtr base_;
    int lanes_[4];
    int count_;
};

// v[i] with an index known only when running; out-of-range indexes are
// clamped to the vector.
class DynamicIndex : public LValue {
public:
    DynamicIndex(int slot, int lanes, ExprPtr index) : LValue(Type::Float), slot_(slot), lanes_(lanes), index_(std::move(index)) {}
    Vec eval(Frame& frame) const override { return Vec::splat(frame.slots[slot_].v[lane(frame)]); }
    void store(Frame& frame, const Vec& value) const override { frame.slots[slot_].v[lane(frame)] = value.v[0]; }
    int slot() const override { return slot_; }

private:
    int lane(Frame& frame) const
    {
        const float i = index_->eval(frame).v[0];
        return i >= float(lanes_ - 1) ? lanes_ - 1 : i > 0 ? int(i) : 0;
    }
    int slot_;
    int lanes_;
    ExprPtr index_;
};

template <class Op>
class Map1 : public Expr {
public:
    Map1(Type type, ExprPtr a) : Expr(type), a_(std::move(a)) {}
    Vec eval(Frame& frame) const override
    {
        const Vec a = a_->eval(frame);
        Vec out;
        for (int i = 0; i < 4; ++i) out.v[i] = Op{}(a.v[i]);
        return out;
    }

private:
    ExprPtr a_;
};

template <class Op>
class Map2 : public Expr {
public:
    Map2(Type type, ExprPtr a, ExprPtr b) : Expr(type), a_(std::move(a)), b_(std::move(b)) {}
    Vec eval(Frame& frame) const override
    {
        const Vec a = a_->eval(frame);
        const Vec b = b_->eval(frame);
        Vec out;
        for (int i = 0; i < 4; ++i) out.v[i] = Op{}(a.v[i], b.v[i]);
        return out;
    }

private:
    ExprPtr a_, b_;
};

template <class Op>
class Map3 : public Expr {
public:
    Map3(Type type, ExprPtr a, ExprPtr b, ExprPtr c) : Expr(type), a_(std::move(a)), b_(std::move(b)), c_(std::move(c)) {}
    Vec eval(Frame& frame) const override
    {
        const Vec a = a_->eval(frame);
        const Vec b = b_->eval(frame);
        const Vec c = c_->eval(frame);
        Vec out;
        for (int i = 0; i < 4; ++i) out.v[i] = Op{}(a.v[i], b.v[i], c.v[i]);
        return out;
    }

private:
    ExprPtr a_, b_, c_;
};

// A value made from a whole-vector computation (dot, length, sample, ...).
class Computed : public Expr {
public:
    using Function = Vec (*)(Frame&, const Vec* args);
    Computed(Type type, Function function, std::vector<ExprPtr> args)
        : Expr(type), function_(function), args_(std::move(args))
    {
    }
    Vec eval(Frame& frame) const override
    {
        Vec values[4];
        for (std::size_t i = 0; i < args_.size(); ++i) values[i] = args_[i]->eval(frame);
        return function_(frame, values);
    }

private:
    Function function_;
    std::vector<ExprPtr> args_;  // at most four
};

// vecN(...) from scalars and vectors, or vecN(s) spreading one scalar.
class Construct : public Expr {
public:
    struct Part {
        ExprPtr expr;
        int lanes;
    };
    Construct(Type type, std::vector<Part> parts) : Expr(type), parts_(std::move(parts)) {}
    Vec eval(Frame& frame) const override
    {
        const int wanted = laneCount(type());
        if (parts_.size() == 1 && parts_[0].lanes == 1) {
            Vec s = parts_[0].expr->eval(frame);
            return Vec::splat(s.v[0]);
        }
        Vec out;
        int at = 0;
        for (const Part& p : parts_) {
            const Vec v = p.expr->eval(frame);
            for (int i = 0; i < p.lanes && at < wanted; ++i) out.v[at++] = v.v[i];
        }
        return out;
    }

private:
    std::vector<Part> parts_;
};

// Keeps the first lane of a scalar conversion: float(i), int(f), bool(f).
class Convert : public Expr {
public:
    Convert(Type type, ExprPtr a) : Expr(type), a_(std::move(a)) {}
    Vec eval(Frame& frame) const override
    {
        const float x = a_->eval(frame).v[0];
        if (type() == Type::Int) return Vec::splat(std::isfinite(x) ? std::trunc(x) : 0.0f);
        if (type() == Type::Bool) return Vec::splat(x != 0 ? 1.0f : 0.0f);
        return Vec::splat(x);
    }

private:
    ExprPtr a_;
};

class Conditional : public Expr {
public:
    Conditional(Type type, ExprPtr condition, ExprPtr yes, ExprPtr no)
        : Expr(type), condition_(std::move(condition)), yes_(std::move(yes)), no_(std::move(no))
    {
    }
    Vec eval(Frame& frame) const override
    {
        return condition_->eval(frame).v[0] != 0 ? yes_->eval(frame) : no_->eval(frame);
    }

private:
    ExprPtr condition_, yes_, no_;
};

class LogicalAnd : public Expr {
public:
    LogicalAnd(ExprPtr a, ExprPtr b, bool isOr) : Expr(Type::Bool), a_(std::move(a)), b_(std::move(b)), or_(isOr) {}
    Vec eval(Frame& frame) const override
    {
        const bool a = a_->eval(frame).v[0] != 0;
        if (a == or_) return Vec::splat(a ? 1.0f : 0.0f);
        return Vec::splat(b_->eval(frame).v[0] != 0 ? 1.0f : 0.0f);
    }

private:
    ExprPtr a_, b_;
    bool or_;
};

// ==, != over the lanes a type uses.
class Equality : public Expr {
public:
    Equality(ExprPtr a, ExprPtr b, int lanes, bool equal) : Expr(Type::Bool), a_(std::move(a)), b_(std::move(b)), lanes_(lanes), equal_(equal) {}
    Vec eval(Frame& frame) const override
    {
        const Vec a = a_->eval(frame), b = b_->eval(frame);
        bool same = true;
        for (int i = 0; i < lanes_; ++i) same = same && a.v[i] == b.v[i];
        return Vec::splat(same == equal_ ? 1.0f : 0.0f);
    }

private:
    ExprPtr a_, b_;
    int lanes_;
    bool equal_;
};

// a = b, a += b, ++a, a++ ...: stores, then yields the new value, or the
// old one for postfix forms.
class Assign : public Expr {
public:
    Assign(Type type, std::unique_ptr<LValue> target, ExprPtr value, bool yieldsOld = false)
        : Expr(type), target_(std::move(target)), value_(std::move(value)), yieldsOld_(yieldsOld)
    {
    }
    Vec eval(Frame& frame) const override
    {
        const Vec old = yieldsOld_ ? target_->eval(frame) : Vec{};
        const Vec v = value_->eval(frame);
        target_->store(frame, v);
        return yieldsOld_ ? old : v;
    }

private:
    std::unique_ptr<LValue> target_;
    ExprPtr value_;  // computes the new value, reading the target itself for compound forms
    bool yieldsOld_;
};

// A read of an l-value that the value expression of a compound assignment
// shares with its target, without owning it.
class LValueRead : public Expr {
public:
    explicit LValueRead(const LValue* target) : Expr(target->type()), target_(target) {}
    Vec eval(Frame& frame) const override { return target_->eval(frame); }

private:
    const LValue* target_;
};

struct Function;

class Call : public Expr {
public:
    Call(Type type, const Function* function, std::vector<ExprPtr> args) : Expr(type), function_(function), args_(std::move(args)) {}
    Vec eval(Frame& frame) const override;

private:
    const Function* function_;
    std::vector<ExprPtr> args_;
};

// --- Statements ------------------------------------------------------------

class ExprStmt : public Stmt {
public:
    explicit ExprStmt(ExprPtr e) : e_(std::move(e)) {}
    Flow exec(Frame& frame) const override
    {
        e_->eval(frame);
        return Flow::Next;
    }

private:
    ExprPtr e_;
};

class Block : public Stmt {
public:
    explicit Block(std::vector<StmtPtr> body) : body_(std::move(body)) {}
    Flow exec(Frame& frame) const override
    {
        for (const StmtPtr& s : body_) {
            const Flow f = s->exec(frame);
            if (f != Flow::Next) return f;
        }
        return Flow::Next;
    }

private:
    std::vector<StmtPtr> body_;
};

class If : public Stmt {
public:
    If(ExprPtr condition, StmtPtr yes, StmtPtr no) : condition_(std::move(condition)), yes_(std::move(yes)), no_(std::move(no)) {}
    Flow exec(Frame& frame) const override
    {
        if (condition_->eval(frame).v[0] != 0) return yes_->exec(frame);
        return no_ ? no_->exec(frame) : Flow::Next;
    }

private:
    ExprPtr condition_;
    StmtPtr yes_, no_;
};

// for, while and do-while: `init` once, then `body` while `condition`
// holds (checked first unless `bodyFirst`), `step` after each round.
class Loop : public Stmt {
public:
    Loop(StmtPtr init, ExprPtr condition, ExprPtr step, StmtPtr body, bool bodyFirst)
        : init_(std::move(init)), condition_(std::move(condition)), step_(std::move(step)), body_(std::move(body)), bodyFirst_(bodyFirst)
    {
    }
    Flow exec(Frame& frame) const override
    {
        if (init_) init_->exec(frame);
        bool first = bodyFirst_;
        while (first || !condition_ || condition_->eval(frame).v[0] != 0) {
            first = false;
            if (--frame.loopBudget < 0) {
                frame.exhausted = true;
                return Flow::Return;
            }
            const Flow f = body_->exec(frame);
            if (f == Flow::Break) break;
            if (f == Flow::Return) return f;
            if (step_) step_->eval(frame);
        }
        return Flow::Next;
    }

private:
    StmtPtr init_;
    ExprPtr condition_;
    ExprPtr step_;
    StmtPtr body_;
    bool bodyFirst_;
};

class Jump : public Stmt {
public:
    explicit Jump(Flow flow) : flow_(flow) {}
    Flow exec(Frame&) const override { return flow_; }

private:
    Flow flow_;
};

class Return : public Stmt {
public:
    explicit Return(ExprPtr value) : value_(std::move(value)) {}
    Flow exec(Frame& frame) const override
    {
        if (value_) frame.result = value_->eval(frame);
        return Flow::Return;
    }

private:
    ExprPtr value_;
};

// --- Functions -------------------------------------------------------------

struct Parameter {
    QString name;
    Type type;
    bool isColor = false;  // __color: a colour, premultiplied before the kernel sees it
    int slot;
};

struct Function {
    QString name;
    Type returnType = Type::Void;
    bool isKernel = false;
    std::vector<Parameter> parameters;
    StmtPtr body;
};

inline Vec Call::eval(Frame& frame) const
{
    Vec values[32];
    const std::size_t n = args_.size();
    for (std::size_t i = 0; i < n; ++i) values[i] = args_[i]->eval(frame);
    for (std::size_t i = 0; i < n; ++i) frame.slots[function_->parameters[i].slot] = values[i];
    frame.result = {};
    function_->body->exec(frame);
    return frame.result;
}

}  // namespace runtime::kernel
