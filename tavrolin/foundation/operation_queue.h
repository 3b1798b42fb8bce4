#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tavrolin::foundation {

/// A piece of asynchronous work that a queue starts and that says itself when it is done: `start`
/// returns at once, and the operation is over when `isFinished` turns true. Threads: any.
class Operation : public std::enable_shared_from_this<Operation> {
public:
    /// Hears of a change of "isReady", "isExecuting" or "isFinished": once before (`isPrior`), once
    /// after it.
    using Observer = std::function<void(std::string_view key, bool isPrior)>;

    Operation();
    virtual ~Operation();

    virtual void start() = 0;
    virtual bool isReady() const = 0;
    virtual bool isExecuting() const = 0;
    virtual bool isFinished() const = 0;
    virtual bool isAsynchronous() const = 0;

    /// Sets a flag and nothing else; what an operation makes of it is its own affair.
    virtual void cancel();
    bool isCancelled() const;

    std::string name() const;
    void setName(std::string name);

    void addObserver(Observer observer);

protected:
    void willChangeValueForKey(std::string_view key);
    void didChangeValueForKey(std::string_view key);

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// Starts operations as they come, each in a block of its own on worker threads, and holds them
/// until they are finished. There is no limit on how many run at once: they wait, they don't work.
/// Threads: any.
class OperationQueue {
public:
    /// Runs a block soon, on another thread.
    using Executor = std::function<void(std::function<void()>)>;

    explicit OperationQueue(Executor executor);
    /// Lets go of the operations; those that were started go on.
    ~OperationQueue();

    /// Starts the operation as soon as it is ready, also when it was cancelled. Raises `Exception`
    /// for null and for an operation that has been started or is in the queue already.
    void addOperation(std::shared_ptr<Operation> operation);
    /// Those that are not finished yet, in the order in which they were added.
    std::vector<std::shared_ptr<Operation>> operations() const;

private:
    struct State;
    std::shared_ptr<State> state_;
};

}  // namespace tavrolin::foundation
