// SPDX-License-Identifier: MIT
#include "difference.h"

#include <algorithm>
#include <vector>

namespace {

using Lines = std::vector<std::string_view>;

// A run of lines that go, and of those that come in their place.
struct Change {
    std::size_t before, beforeEnd, after, afterEnd;
};

// The shortest way from one text to the other, by the steps of Myers: `reach[d][k]` is how far d steps come
// on diagonal k. Where it would be long, all that is between the equal ends is one change.
class Comparison {
public:
    Comparison(const Lines& before, const Lines& after) : m_before(before), m_after(after) {}

    std::vector<Change> Run() {
        std::size_t end = std::min(m_before.size(), m_after.size());
        while (m_start < end && m_before[m_start] == m_after[m_start])
            ++m_start;
        end -= m_start;
        while (m_tail < end && m_before[m_before.size() - m_tail - 1] == m_after[m_after.size() - m_tail - 1])
            ++m_tail;
        m_countBefore = static_cast<int>(m_before.size() - m_tail - m_start);
        m_countAfter = static_cast<int>(m_after.size() - m_tail - m_start);
        if (!Search()) AddChange(0, m_countBefore, 0, m_countAfter);
        std::reverse(m_changes.begin(), m_changes.end());
        return std::move(m_changes);
    }

private:
    static constexpr int most = 1000; // steps

    bool IsEqual(int x, int y) const {
        return m_before[m_start + static_cast<std::size_t>(x)] ==
               m_after[m_start + static_cast<std::size_t>(y)];
    }

    bool Search() {
        std::vector<int> reach(2 * most + 3, 0);
        const auto at = [&](int k) -> int& { return reach[static_cast<std::size_t>(k + most + 1)]; };
        std::vector<std::vector<int>> history;
        for (int d = 0; d <= most; ++d) {
            for (int k = -d; k <= d; k += 2) {
                int x = k == -d || (k != d && at(k - 1) < at(k + 1)) ? at(k + 1) : at(k - 1) + 1;
                while (x < m_countBefore && x - k < m_countAfter && x - k >= 0 && IsEqual(x, x - k))
                    ++x;
                at(k) = x;
                if (k != m_countBefore - m_countAfter || x < m_countBefore) continue;
                Trace(history, d, k);
                return true;
            }
            history.emplace_back(reach.begin() + most + 1 - d, reach.begin() + most + 2 + d);
        }
        return false;
    }

    // Back from the end, step by step; steps without equal lines between them are one change.
    void Trace(const std::vector<std::vector<int>>& history, int d, int k) {
        for (; d > 0; --d) {
            const std::vector<int>& reach = history[static_cast<std::size_t>(d - 1)];
            const auto at = [&](int diagonal) {
                const int index = diagonal + d - 1;
                return index < 0 || index > 2 * (d - 1) ? -1 : reach[static_cast<std::size_t>(index)];
            };
            const bool isInsertion = k == -d || (k != d && at(k - 1) < at(k + 1));
            const int from = isInsertion ? k + 1 : k - 1;
            const int fromX = at(from), fromY = fromX - from;
            AddChange(fromX, isInsertion ? fromX : fromX + 1, fromY, isInsertion ? fromY + 1 : fromY);
            k = from;
        }
    }

    void AddChange(int x, int xEnd, int y, int yEnd) {
        const auto place = [&](int at) { return m_start + static_cast<std::size_t>(at); };
        const Change change{place(x), place(xEnd), place(y), place(yEnd)};
        if (!m_changes.empty() && m_changes.back().before == change.beforeEnd &&
            m_changes.back().after == change.afterEnd) {
            m_changes.back().before = change.before;
            m_changes.back().after = change.after;
        } else if (change.before < change.beforeEnd || change.after < change.afterEnd) {
            m_changes.push_back(change);
        }
    }

    const Lines &m_before, &m_after;
    std::size_t m_start = 0, m_tail = 0; // equal lines at both ends
    int m_countBefore = 0, m_countAfter = 0;
    std::vector<Change> m_changes; // from the last to the first
};

void Append(std::string& diff, char sign, std::string_view line) {
    const std::size_t length = std::min(line.find_first_of("\r\n"), line.size());
    diff += sign;
    diff.append(line.substr(0, length)) += '\n';
    if (length == line.size()) diff += "\\ No newline at end of file\n";
}

std::string Range(std::size_t from, std::size_t count) {
    return std::to_string(count == 0 ? from : from + 1) + (count == 1 ? "" : "," + std::to_string(count));
}

} // namespace

std::vector<std::string_view> LinesOf(std::string_view text) {
    Lines lines;
    while (!text.empty()) {
        std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
        if (end < text.size()) end += text.substr(end).starts_with("\r\n") ? 2 : 1;
        lines.push_back(text.substr(0, end));
        text.remove_prefix(end);
    }
    return lines;
}

std::string UnifiedDiff(std::string_view before, std::string_view after, std::string_view name) {
    constexpr std::size_t around = 3;
    const Lines old = LinesOf(before), now = LinesOf(after);
    const std::vector<Change> changes = Comparison(old, now).Run();
    if (changes.empty()) return {};
    std::string diff = "--- " + std::string(name) + "\n+++ " + std::string(name) + "\n";
    for (auto first = changes.begin(); first != changes.end();) {
        auto last = first + 1;
        while (last != changes.end() && last->before - (last - 1)->beforeEnd <= 2 * around)
            ++last;
        const std::size_t lead = std::min(first->before, around);
        const std::size_t trail = std::min(old.size() - (last - 1)->beforeEnd, around);
        std::size_t at = first->before - lead;
        diff += "@@ -" + Range(at, (last - 1)->beforeEnd + trail - at);
        diff +=
            " +" + Range(first->after - lead, (last - 1)->afterEnd + trail - (first->after - lead)) + " @@\n";
        for (; first != last; ++first) {
            for (; at < first->before; ++at)
                Append(diff, ' ', old[at]);
            for (; at < first->beforeEnd; ++at)
                Append(diff, '-', old[at]);
            for (std::size_t line = first->after; line < first->afterEnd; ++line)
                Append(diff, '+', now[line]);
        }
        for (std::size_t end = at + trail; at < end; ++at)
            Append(diff, ' ', old[at]);
    }
    return diff;
}
