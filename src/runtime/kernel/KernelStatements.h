#pragma once
// The statement nodes of a compiled kernel, its functions, and calls.

#include "runtime/kernel/KernelExpressions.h"

namespace runtime::kernel {

// --- Statements ------------------------------------------------------------

class ExprStmt : public Stmt {
public:
    explicit ExprStmt(ExprPtr e) : e_(std::move(e)) {}
    void exec(Frame& frame, const Mask& active) const override
    {
        frame.mask = active;
        e_->eval(frame);
    }

private:
    ExprPtr e_;
};

class Block : public Stmt {
public:
    explicit Block(std::vector<StmtPtr> body) : body_(std::move(body)) {}
    void exec(Frame& frame, const Mask& active) const override
    {
        Mask m = active;
        for (const StmtPtr& s : body_) {
            frame.narrow(m);
            if (!m.any()) return;
            s->exec(frame, m);
        }
    }

private:
    std::vector<StmtPtr> body_;
};

class If : public Stmt {
public:
    If(ExprPtr condition, StmtPtr yes, StmtPtr no) : condition_(std::move(condition)), yes_(std::move(yes)), no_(std::move(no)) {}
    void exec(Frame& frame, const Mask& active) const override
    {
        frame.mask = active;
        const Lanes& c = condition_->eval(frame);
        const Mask yes = active.where(c, true);
        const Mask no = active.where(c, false);
        if (yes.any()) yes_->exec(frame, yes);
        if (no_ && no.any()) no_->exec(frame, no);
    }

private:
    ExprPtr condition_;
    StmtPtr yes_, no_;
};

// for, while and do-while: `init` once, then `body` while `condition`
// holds (checked first unless `bodyFirst`), `step` after each round. The
// loop goes round while any pixel still needs it.
class Loop : public Stmt {
public:
    Loop(StmtPtr init, ExprPtr condition, ExprPtr step, StmtPtr body, bool bodyFirst)
        : init_(std::move(init)), condition_(std::move(condition)), step_(std::move(step)), body_(std::move(body)), bodyFirst_(bodyFirst)
    {
    }
    void exec(Frame& frame, const Mask& active) const override
    {
        Mask broken = Mask::none(), continued = Mask::none();
        Mask* const outerBroken = frame.broken;
        Mask* const outerContinued = frame.continued;
        Mask running = active;
        if (init_) init_->exec(frame, running);
        frame.broken = &broken;
        frame.continued = &continued;
        for (bool first = bodyFirst_;; first = false) {
            running.remove(*frame.returned);
            running.remove(broken);
            if (!first && condition_) {
                frame.mask = running;
                running = running.where(condition_->eval(frame), true);
            }
            if (!running.any()) break;
            if (--frame.loopBudget < 0) {
                frame.exhausted = true;
                std::memset(frame.returned->on, 1, sizeof frame.returned->on);
                break;
            }
            body_->exec(frame, running);
            continued = Mask::none();
            running.remove(*frame.returned);
            running.remove(broken);
            if (step_ && running.any()) {
                frame.mask = running;
                step_->eval(frame);
            }
        }
        frame.broken = outerBroken;
        frame.continued = outerContinued;
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
    explicit Jump(bool isBreak) : break_(isBreak) {}
    void exec(Frame& frame, const Mask& active) const override { (break_ ? frame.broken : frame.continued)->add(active); }

private:
    bool break_;
};

class Return : public Stmt {
public:
    Return(ExprPtr value) : value_(std::move(value)) {}
    void exec(Frame& frame, const Mask& active) const override
    {
        if (value_) {
            frame.mask = active;
            storeMasked(*frame.result, value_->eval(frame), value_->lanes(), active);
        }
        frame.returned->add(active);
    }

private:
    ExprPtr value_;  // already of the function's type
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

inline const Lanes& Call::eval(Frame& frame) const
{
    const Lanes* values[32];
    const std::size_t n = args_.size();
    for (std::size_t i = 0; i < n; ++i) values[i] = &args_[i]->eval(frame);
    for (std::size_t i = 0; i < n; ++i) frame.slots[function_->parameters[i].slot] = *values[i];
    // The callee sees only its own returns, and no loop of the caller.
    const Mask active = frame.mask;
    Mask returned = Mask::none(), noLoop = Mask::none();
    Mask* const callerReturned = frame.returned;
    Mask* const callerBroken = frame.broken;
    Mask* const callerContinued = frame.continued;
    Lanes* const callerResult = frame.result;
    frame.returned = &returned;
    frame.broken = &noLoop;
    frame.continued = &noLoop;
    frame.result = &out_;
    std::memset(&out_, 0, sizeof out_);
    function_->body->exec(frame, active);
    // A kernel stopped for looping too long stops its callers too.
    if (frame.exhausted) std::memset(callerReturned->on, 1, sizeof callerReturned->on);
    frame.returned = callerReturned;
    frame.broken = callerBroken;
    frame.continued = callerContinued;
    frame.result = callerResult;
    frame.mask = active;
    return out_;
}

}  // namespace runtime::kernel
