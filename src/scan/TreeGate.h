#pragma once

#include <atomic>
#include <mutex>
#include <shared_mutex>

namespace tw {

// Keeps readers on worker threads (the kinds summary, the name search) and
// edits on the GUI thread (a removal) apart. A reader asks `editWaiting()`
// every few thousand nodes and lets go when it says true, so an edit waits
// for at most that long, never for a whole pass over a large tree.
class TreeGate {
public:
    class Reading {
    public:
        explicit Reading(const TreeGate& gate);
        // An edit waits: give up and let go soon.
        [[nodiscard]] bool editWaiting() const
        {
            return m_gate->m_editsWaiting.load(std::memory_order_relaxed) > 0;
        }

    private:
        const TreeGate* m_gate;
        std::shared_lock<std::shared_mutex> m_lock;
    };

    class Editing {
    public:
        explicit Editing(TreeGate& gate);
        ~Editing();
        Editing(const Editing&) = delete;
        Editing& operator=(const Editing&) = delete;

    private:
        TreeGate& m_gate;
        std::unique_lock<std::shared_mutex> m_lock;
    };

    // Any thread; blocks while an edit is under way.
    [[nodiscard]] Reading read() const { return Reading(*this); }
    // The GUI thread, around every change to a finished tree.
    [[nodiscard]] Editing edit() { return Editing(*this); }

private:
    mutable std::shared_mutex m_mutex;
    mutable std::atomic<int> m_editsWaiting{0};
};

} // namespace tw
