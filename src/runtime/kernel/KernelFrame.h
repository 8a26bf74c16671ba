#pragma once
// The frame a kernel runs in and the base classes of its executable tree.
// A program runs a block of pixels at a time: every value holds kBlock
// pixels of up to four lanes, so walking the tree costs once per block
// rather than once per pixel, and the lane loops vectorise. Pixels that take
// different paths through an if or a loop are handled with masks: a store
// only changes the pixels of the current mask.
//
// Each node keeps its own result buffer, so a program runs on one thread at
// a time. Variables live in numbered slots of a frame; functions cannot
// recurse, so each has slots of its own and a call needs no stack.

#include "runtime/kernel/KernelSampler.h"
#include "runtime/kernel/KernelValue.h"

#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

namespace runtime::kernel {

constexpr int kBlock = 32;

// Lane l of pixel p is v[l][p]. A value of type T uses lanes below
// laneCount(T): scalars (float, int, bool) only lane 0.
struct alignas(32) Lanes {
    float v[4][kBlock];
};

struct Mask {
    std::uint8_t on[kBlock];

    static Mask none()
    {
        Mask m;
        std::memset(m.on, 0, sizeof m.on);
        return m;
    }
    bool all() const
    {
        unsigned r = 1;
        for (int p = 0; p < kBlock; ++p) r &= on[p];
        return r != 0;
    }
    bool any() const
    {
        unsigned r = 0;
        for (int p = 0; p < kBlock; ++p) r |= on[p];
        return r != 0;
    }
    // The pixels of this mask where lane 0 of `condition` is true (or false).
    Mask where(const Lanes& condition, bool truth) const
    {
        Mask m;
        for (int p = 0; p < kBlock; ++p) m.on[p] = on[p] & ((condition.v[0][p] != 0) == truth);
        return m;
    }
    void remove(const Mask& other)
    {
        for (int p = 0; p < kBlock; ++p) on[p] &= ~other.on[p];
    }
    void add(const Mask& other)
    {
        for (int p = 0; p < kBlock; ++p) on[p] |= other.on[p];
    }
};

struct Frame {
    Lanes* slots = nullptr;
    const Sampler* samplers = nullptr;
    Lanes destCoord;
    Mask mask;  // the pixels an expression's stores affect
    // Pixels that left the current function, or broke out of / continued
    // the innermost loop.
    Mask* returned = nullptr;
    Mask* broken = nullptr;
    Mask* continued = nullptr;
    Lanes* result = nullptr;  // the current function's return values
    // Loop rounds left for this block; a kernel that loops longer is
    // stopped rather than allowed to hang rendering.
    int loopBudget = 0;
    bool exhausted = false;

    // Drops from `m` the pixels that no longer run the following statements.
    void narrow(Mask& m) const
    {
        for (int p = 0; p < kBlock; ++p) m.on[p] &= ~(returned->on[p] | broken->on[p] | continued->on[p]);
    }
};

// Copies `lanes` lanes of the pixels in `mask`.
inline void storeMasked(Lanes& to, const Lanes& from, int lanes, const Mask& mask)
{
    if (mask.all()) {
        std::memmove(to.v, from.v, sizeof to.v[0] * std::size_t(lanes));  // x = x is allowed
        return;
    }
    for (int l = 0; l < lanes; ++l)
        for (int p = 0; p < kBlock; ++p) to.v[l][p] = mask.on[p] ? from.v[l][p] : to.v[l][p];
}

class Expr {
public:
    explicit Expr(Type type) : type_(type) {}
    virtual ~Expr() = default;
    Type type() const { return type_; }
    int lanes() const { return laneCount(type_); }
    virtual const Lanes& eval(Frame& frame) const = 0;

private:
    Type type_;
};
using ExprPtr = std::unique_ptr<Expr>;

// An expression with a result buffer of its own.
class Computing : public Expr {
public:
    using Expr::Expr;

protected:
    mutable Lanes out_{};
};

// Something that can be assigned: a variable, some of its lanes, or one
// lane picked by an index.
class LValue : public Computing {
public:
    using Computing::Computing;
    virtual void store(Frame& frame, const Lanes& value) const = 0;
    virtual int slot() const = 0;  // the variable written to
};

class Stmt {
public:
    virtual ~Stmt() = default;
    // Runs for the pixels of `active`.
    virtual void exec(Frame& frame, const Mask& active) const = 0;
};
using StmtPtr = std::unique_ptr<Stmt>;

}  // namespace runtime::kernel
