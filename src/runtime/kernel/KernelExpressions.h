#pragma once
// The expression nodes of a compiled kernel.

#include "runtime/kernel/KernelFrame.h"

#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

namespace runtime::kernel {

// --- Expressions -----------------------------------------------------------

class Constant : public Computing {
public:
    Constant(Type type, Vec value) : Computing(type), value_(value)
    {
        for (int l = 0; l < 4; ++l)
            for (int p = 0; p < kBlock; ++p) out_.v[l][p] = value.v[l];
    }
    const Lanes& eval(Frame&) const override { return out_; }
    const Vec& value() const { return value_; }

private:
    Vec value_;
};

class Variable : public LValue {
public:
    Variable(Type type, int slot) : LValue(type), slot_(slot) {}
    const Lanes& eval(Frame& frame) const override { return frame.slots[slot_]; }
    void store(Frame& frame, const Lanes& value) const override { storeMasked(frame.slots[slot_], value, lanes(), frame.mask); }
    int slot() const override { return slot_; }

private:
    int slot_;
};

// Lanes of a variable by name (.xy, .rgba) or constant index.
class Swizzle : public LValue {
public:
    Swizzle(Type type, int slot, const int lanes[4], int count) : LValue(type), slot_(slot), count_(count)
    {
        for (int i = 0; i < 4; ++i) lanes_[i] = lanes[i];
    }
    const Lanes& eval(Frame& frame) const override
    {
        const Lanes& s = frame.slots[slot_];
        for (int i = 0; i < count_; ++i) std::memcpy(out_.v[i], s.v[lanes_[i]], sizeof out_.v[i]);
        return out_;
    }
    void store(Frame& frame, const Lanes& value) const override
    {
        Lanes& s = frame.slots[slot_];
        for (int i = 0; i < count_; ++i)
            for (int p = 0; p < kBlock; ++p) s.v[lanes_[i]][p] = frame.mask.on[p] ? value.v[i][p] : s.v[lanes_[i]][p];
    }
    int slot() const override { return slot_; }

private:
    int slot_;
    int lanes_[4];
    int count_;
};

// Lanes of a value that is not a variable, e.g. sample(...).rgb.
class RvalueSwizzle : public Computing {
public:
    RvalueSwizzle(Type type, ExprPtr base, const int lanes[4], int count) : Computing(type), base_(std::move(base)), count_(count)
    {
        for (int i = 0; i < 4; ++i) lanes_[i] = lanes[i];
    }
    const Lanes& eval(Frame& frame) const override
    {
        const Lanes& s = base_->eval(frame);
        for (int i = 0; i < count_; ++i) std::memcpy(out_.v[i], s.v[lanes_[i]], sizeof out_.v[i]);
        return out_;
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
    const Lanes& eval(Frame& frame) const override
    {
        const Lanes& index = index_->eval(frame);
        const Lanes& s = frame.slots[slot_];
        for (int p = 0; p < kBlock; ++p) out_.v[0][p] = s.v[lane(index.v[0][p])][p];
        return out_;
    }
    void store(Frame& frame, const Lanes& value) const override
    {
        const Lanes& index = index_->eval(frame);
        Lanes& s = frame.slots[slot_];
        for (int p = 0; p < kBlock; ++p)
            if (frame.mask.on[p]) s.v[lane(index.v[0][p])][p] = value.v[0][p];
    }
    int slot() const override { return slot_; }

private:
    int lane(float i) const { return i >= float(lanes_ - 1) ? lanes_ - 1 : i > 0 ? int(i) : 0; }
    int slot_;
    int lanes_;
    ExprPtr index_;
};

// Which lane of an argument feeds lane l of a result: a scalar feeds all.
inline int sourceLane(const Expr& arg, int l) { return arg.lanes() == 1 ? 0 : l; }

template <class Op>
class Map1 : public Computing {
public:
    Map1(Type type, ExprPtr a) : Computing(type), a_(std::move(a)) {}
    const Lanes& eval(Frame& frame) const override
    {
        const Lanes& a = a_->eval(frame);
        for (int l = 0; l < lanes(); ++l) {
            const float* x = a.v[sourceLane(*a_, l)];
            for (int p = 0; p < kBlock; ++p) out_.v[l][p] = Op{}(x[p]);
        }
        return out_;
    }

private:
    ExprPtr a_;
};

template <class Op>
class Map2 : public Computing {
public:
    Map2(Type type, ExprPtr a, ExprPtr b) : Computing(type), a_(std::move(a)), b_(std::move(b)) {}
    const Lanes& eval(Frame& frame) const override
    {
        const Lanes& a = a_->eval(frame);
        const Lanes& b = b_->eval(frame);
        for (int l = 0; l < lanes(); ++l) {
            const float* x = a.v[sourceLane(*a_, l)];
            const float* y = b.v[sourceLane(*b_, l)];
            for (int p = 0; p < kBlock; ++p) out_.v[l][p] = Op{}(x[p], y[p]);
        }
        return out_;
    }

private:
    ExprPtr a_, b_;
};

template <class Op>
class Map3 : public Computing {
public:
    Map3(Type type, ExprPtr a, ExprPtr b, ExprPtr c) : Computing(type), a_(std::move(a)), b_(std::move(b)), c_(std::move(c)) {}
    const Lanes& eval(Frame& frame) const override
    {
        const Lanes& a = a_->eval(frame);
        const Lanes& b = b_->eval(frame);
        const Lanes& c = c_->eval(frame);
        for (int l = 0; l < lanes(); ++l) {
            const float* x = a.v[sourceLane(*a_, l)];
            const float* y = b.v[sourceLane(*b_, l)];
            const float* z = c.v[sourceLane(*c_, l)];
            for (int p = 0; p < kBlock; ++p) out_.v[l][p] = Op{}(x[p], y[p], z[p]);
        }
        return out_;
    }

private:
    ExprPtr a_, b_, c_;
};

// A value made pixel by pixel from whole vectors (dot, length, sample, ...).
// Scalar arguments arrive spread over all four lanes.
class Computed : public Computing {
public:
    using Function = Vec (*)(Frame&, int pixel, const Vec* args);
    Computed(Type type, Function function, std::vector<ExprPtr> args) : Computing(type), function_(function), args_(std::move(args)) {}
    const Lanes& eval(Frame& frame) const override
    {
        const Lanes* values[4] = {};
        for (std::size_t i = 0; i < args_.size(); ++i) values[i] = &args_[i]->eval(frame);
        Vec args[4];
        const int n = lanes();
        for (int p = 0; p < kBlock; ++p) {
            for (std::size_t i = 0; i < args_.size(); ++i)
                for (int l = 0; l < 4; ++l) args[i].v[l] = values[i]->v[sourceLane(*args_[i], std::min(l, 3))][p];
            const Vec r = function_(frame, p, args);
            for (int l = 0; l < n; ++l) out_.v[l][p] = r.v[l];
        }
        return out_;
    }

private:
    Function function_;
    std::vector<ExprPtr> args_;  // at most four
};

// vecN(...) from scalars and vectors, or vecN(s) spreading one scalar.
class Construct : public Computing {
public:
    Construct(Type type, std::vector<ExprPtr> parts) : Computing(type), parts_(std::move(parts)) {}
    const Lanes& eval(Frame& frame) const override
    {
        const int wanted = lanes();
        if (parts_.size() == 1 && parts_[0]->lanes() == 1) {
            const Lanes& s = parts_[0]->eval(frame);
            for (int l = 0; l < wanted; ++l) std::memcpy(out_.v[l], s.v[0], sizeof out_.v[l]);
            return out_;
        }
        int at = 0;
        for (const ExprPtr& part : parts_) {
            const Lanes& v = part->eval(frame);
            for (int l = 0; l < part->lanes() && at < wanted; ++l) std::memcpy(out_.v[at++], v.v[l], sizeof out_.v[0]);
        }
        return out_;
    }

private:
    std::vector<ExprPtr> parts_;
};

// Keeps the first lane of a scalar conversion: float(i), int(f), bool(f).
class Convert : public Computing {
public:
    Convert(Type type, ExprPtr a) : Computing(type), a_(std::move(a)) {}
    const Lanes& eval(Frame& frame) const override
    {
        const float* x = a_->eval(frame).v[0];
        float* out = out_.v[0];
        if (type() == Type::Int)
            for (int p = 0; p < kBlock; ++p) out[p] = std::isfinite(x[p]) ? std::trunc(x[p]) : 0.0f;
        else if (type() == Type::Bool)
            for (int p = 0; p < kBlock; ++p) out[p] = x[p] != 0 ? 1.0f : 0.0f;
        else
            std::memcpy(out, x, sizeof out_.v[0]);
        return out_;
    }

private:
    ExprPtr a_;
};

// A scalar used as a vector: the value in every lane.
class Broadcast : public Computing {
public:
    Broadcast(Type type, ExprPtr a) : Computing(type), a_(std::move(a)) {}
    const Lanes& eval(Frame& frame) const override
    {
        const Lanes& s = a_->eval(frame);
        for (int l = 0; l < lanes(); ++l) std::memcpy(out_.v[l], s.v[0], sizeof out_.v[l]);
        return out_;
    }

private:
    ExprPtr a_;
};

// c ? a : b. Each side runs for its own pixels, so a store inside one side
// leaves the other side's pixels alone.
class Conditional : public Computing {
public:
    Conditional(Type type, ExprPtr condition, ExprPtr yes, ExprPtr no)
        : Computing(type), condition_(std::move(condition)), yes_(std::move(yes)), no_(std::move(no))
    {
    }
    const Lanes& eval(Frame& frame) const override
    {
        const Mask saved = frame.mask;
        const Lanes& c = condition_->eval(frame);
        const Mask yes = saved.where(c, true), no = saved.where(c, false);
        const int n = lanes();
        if (!no.any()) return yes_->eval(frame);
        if (!yes.any()) return no_->eval(frame);
        std::uint8_t pick[kBlock];
        for (int p = 0; p < kBlock; ++p) pick[p] = c.v[0][p] != 0;
        frame.mask = yes;
        storeAll(yes_->eval(frame), n);
        frame.mask = no;
        const Lanes& b = no_->eval(frame);
        for (int l = 0; l < n; ++l)
            for (int p = 0; p < kBlock; ++p) out_.v[l][p] = pick[p] ? out_.v[l][p] : b.v[l][p];
        frame.mask = saved;
        return out_;
    }

private:
    void storeAll(const Lanes& from, int n) const
    {
        for (int l = 0; l < n; ++l) std::memcpy(out_.v[l], from.v[l], sizeof out_.v[l]);
    }
    ExprPtr condition_, yes_, no_;
};

// && and ||: the right side runs only for the pixels that need it.
class LogicalAnd : public Computing {
public:
    LogicalAnd(ExprPtr a, ExprPtr b, bool isOr) : Computing(Type::Bool), a_(std::move(a)), b_(std::move(b)), or_(isOr) {}
    const Lanes& eval(Frame& frame) const override
    {
        const Mask saved = frame.mask;
        const Lanes& a = a_->eval(frame);
        std::memcpy(out_.v[0], a.v[0], sizeof out_.v[0]);
        const Mask undecided = saved.where(a, !or_);
        if (!undecided.any()) return out_;
        frame.mask = undecided;
        const Lanes& b = b_->eval(frame);
        for (int p = 0; p < kBlock; ++p) {
            const bool left = out_.v[0][p] != 0, right = b.v[0][p] != 0;
            out_.v[0][p] = (or_ ? (left || right) : (left && right)) ? 1.0f : 0.0f;
        }
        frame.mask = saved;
        return out_;
    }

private:
    ExprPtr a_, b_;
    bool or_;
};

// ==, != over the lanes a type uses.
class Equality : public Computing {
public:
    Equality(ExprPtr a, ExprPtr b, int lanes, bool equal)
        : Computing(Type::Bool), a_(std::move(a)), b_(std::move(b)), lanes_(lanes), equal_(equal)
    {
    }
    const Lanes& eval(Frame& frame) const override
    {
        const Lanes& a = a_->eval(frame);
        const Lanes& b = b_->eval(frame);
        for (int p = 0; p < kBlock; ++p) {
            bool same = true;
            for (int l = 0; l < lanes_; ++l) same = same && a.v[l][p] == b.v[l][p];
            out_.v[0][p] = same == equal_ ? 1.0f : 0.0f;
        }
        return out_;
    }

private:
    ExprPtr a_, b_;
    int lanes_;
    bool equal_;
};

// a = b, a += b, ++a, a++ ...: stores, then yields the new value, or the
// old one for postfix forms.
class Assign : public Computing {
public:
    Assign(Type type, std::unique_ptr<LValue> target, ExprPtr value, bool yieldsOld = false)
        : Computing(type), target_(std::move(target)), value_(std::move(value)), yieldsOld_(yieldsOld)
    {
    }
    const Lanes& eval(Frame& frame) const override
    {
        if (yieldsOld_) {
            const Lanes& old = target_->eval(frame);
            for (int l = 0; l < lanes(); ++l) std::memcpy(out_.v[l], old.v[l], sizeof out_.v[l]);
        }
        const Lanes& v = value_->eval(frame);
        target_->store(frame, v);
        return yieldsOld_ ? out_ : v;
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
    const Lanes& eval(Frame& frame) const override { return target_->eval(frame); }

private:
    const LValue* target_;
};

struct Function;

class Call : public Computing {
public:
    Call(Type type, const Function* function, std::vector<ExprPtr> args) : Computing(type), function_(function), args_(std::move(args)) {}
    const Lanes& eval(Frame& frame) const override;

private:
    const Function* function_;
    std::vector<ExprPtr> args_;
};

}  // namespace runtime::kernel
