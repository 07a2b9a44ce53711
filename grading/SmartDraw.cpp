#include "SmartDraw.h"

#include <cstdlib>

LayerSelection RandomPick::selection(int strength) const
{
    LayerSelection s;
    s.ids[int(PresetLayer::Top)] = top;
    s.ids[int(PresetLayer::Mid)] = mid;
    s.ids[int(PresetLayer::Down)] = down;
    for (int& v : s.strengths)
        v = strength;
    return s;
}

SmartDraw::SmartDraw(Generator generator)
    : m_generator(generator ? std::move(generator) : Generator([] { return std::rand(); }))
{
}

const RandomPick& SmartDraw::draw()
{
    // The calls are made in this order on purpose: the sequence of draws
    // depends on it.
    if (m_generator() % 2 == 1)
        m_pick.scene = m_generator() % 6;
    m_pick.top = m_generator() % 2 == 1 ? m_generator() % 4 : -1;
    m_pick.mid = m_generator() % 2 == 1 ? m_generator() % 4 : -1;
    m_pick.down = m_generator() % 2 == 1 ? m_generator() % 12 : -1;
    m_history.append(m_pick);
    if (m_history.size() > kHistorySize)
        m_history.removeFirst();
    return m_pick;
}

SmartDraw::Step SmartDraw::stepForward() { return step(+1); }
SmartDraw::Step SmartDraw::stepBack() { return step(-1); }

SmartDraw::Step SmartDraw::step(int direction)
{
    const int k = m_history.indexOf(m_pick);
    if (k < 0)
        return Step::NotFound;
    const int next = k + direction;
    if (next < 0 || next >= m_history.size())
        return Step::AtEnd;
    m_pick = m_history.at(next);
    return Step::Moved;
}
