#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace ringwell {

// The observers of one main-thread object (the store, the alarm service, the
// authorisation and setup-test controllers, their fakes). Observers are called synchronously,
// in the order they subscribed; an observer may subscribe or unsubscribe
// (itself or another) while being called: one unsubscribed during a round is
// not called later in that round, one subscribed during it waits for the next.
template <typename... Args> class ObserverList {
public:
    using Observer = std::function<void(Args...)>;
    using Token = std::uint64_t;

    [[nodiscard]] Token subscribe(Observer observer) {
        const Token token = next_++;
        observers_.emplace(token, std::make_shared<Observer>(std::move(observer)));
        return token;
    }

    void unsubscribe(Token token) { observers_.erase(token); }

    std::size_t size() const { return observers_.size(); }

    // Forgets every observer, e.g. while the observed object is torn down.
    void clear() { observers_.clear(); }

    void notify(const Args&... args) {
        std::vector<std::pair<Token, std::weak_ptr<Observer>>> round;
        for (const auto& [token, observer] : observers_)
            round.emplace_back(token, observer);
        for (const auto& [token, weak] : round) {
            if (!observers_.count(token))
                continue;
            // The shared pointer keeps the function alive even if it
            // unsubscribes itself while running.
            if (auto observer = weak.lock())
                (*observer)(args...);
        }
    }

private:
    std::map<Token, std::shared_ptr<Observer>> observers_;
    Token next_ = 1;
};

} // namespace ringwell
