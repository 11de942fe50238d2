#include "scan/TreeGate.h"

#include <thread>

namespace tw {

TreeGate::Reading::Reading(const TreeGate& gate) : m_gate(&gate)
{
    // A waiting edit goes first: readers that keep arriving must not starve it.
    while (gate.m_editsWaiting.load(std::memory_order_acquire) > 0)
        std::this_thread::yield();
    m_lock = std::shared_lock(gate.m_mutex);
}

TreeGate::Editing::Editing(TreeGate& gate) : m_gate(gate)
{
    m_gate.m_editsWaiting.fetch_add(1, std::memory_order_acq_rel);
    m_lock = std::unique_lock(m_gate.m_mutex);
}

TreeGate::Editing::~Editing()
{
    m_lock.unlock();
    m_gate.m_editsWaiting.fetch_sub(1, std::memory_order_acq_rel);
}

} // namespace tw
