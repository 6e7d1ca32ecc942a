// SPDX-License-Identifier: GPL-3.0-or-later
// KeyedList storage:
//  - rows live in fixed-size chunks addressed by a row id, so growth never
//    moves them and a freed id is reused;
//  - keys, which never change, are packed into a pool of blocks rather than
//    allocated one by one;
//  - an open-addressing hash (linear probing, backward-shift delete) maps a
//    key to its row id;
//  - a counted B+tree of row ids gives the order: every inner entry carries
//    the number of rows below it, so position -> row and row -> position are
//    a walk of the tree's height;
//  - rows appended for bulk loading wait in a plain vector behind the tree
//    and join it on the next add/remove or resort, which builds the tree
//    bottom-up in one pass.
#include "keyedlist.h"
#include "collation.h"
#include "rows.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>
#include <utility>
#include <vector>
#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace qor {
namespace {

constexpr quint32 Nil = 0xFFFFFFFFu;
constexpr quint32 PendingTag = 0x80000000u;  // Row::where for a row still in the pending vector
constexpr int LeafCap = 64;
constexpr int InnerCap = 64;
constexpr int ChunkBits = 10;  // small tables must not pay for a big first chunk
constexpr quint32 ChunkSize = 1u << ChunkBits;

quint32 hashKey(QStringView key)
{
    const char16_t *p = key.utf16();
    qsizetype n = key.size();
    quint64 h = 0x9E3779B97F4A7C15ull ^ quint64(n);
    while (n >= 4) {
        quint64 w;
        std::memcpy(&w, p, 8);
        h = (h ^ w) * 0xBF58476D1CE4E5B9ull;
        h ^= h >> 31;
        p += 4;
        n -= 4;
    }
    quint64 w = 0;
    if (n > 0) std::memcpy(&w, p, size_t(n) * 2);
    h = (h ^ w) * 0x94D049BB133111EBull;
    h ^= h >> 29;
    h *= 0xBF58476D1CE4E5B9ull;
    h ^= h >> 32;
    return quint32(h);
}

// Callers may hand over strings with a large spare capacity (built by
// appending); keeping those would multiply the memory of a big table.
QString compact(const QString &s)
{
    if (s.capacity() > s.size() + 8) return QString(s.constData(), s.size());
    return s;
}
QString compact(QString &&s)
{
    if (s.capacity() > s.size() + 8) return QString(s.constData(), s.size());
    return std::move(s);
}

// Every look-up of a big key index lands on a random page; large pages
// spare the address translation most of its misses there.
void adviseHugePages(void *p, size_t bytes)
{
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    constexpr uintptr_t Huge = uintptr_t(2) << 20;
    if (bytes < 2 * Huge) return;
    const uintptr_t b = (reinterpret_cast<uintptr_t>(p) + Huge - 1) & ~(Huge - 1);
    const uintptr_t e = (reinterpret_cast<uintptr_t>(p) + bytes) & ~(Huge - 1);
    if (e > b) madvise(reinterpret_cast<void *>(b), e - b, MADV_HUGEPAGE);
#else
    Q_UNUSED(p);
    Q_UNUSED(bytes);
#endif
}

}  // namespace

struct KeyedList::Impl {
    struct Row {
        QString text;
        const char16_t *keyAt = nullptr;  // in the key pool
        quint32 keyLen = 0;
        quint32 where = Nil;  // leaf id, or PendingTag | index into pending
        QStringView key() const { return QStringView(keyAt, qsizetype(keyLen)); }
    };
    struct Leaf {
        quint32 parent = Nil;
        quint32 n = 0;
        quint32 ids[LeafCap];
    };
    struct Inner {
        quint32 parent = Nil;
        quint32 n = 0;
        quint32 child[InnerCap];
        quint32 cnt[InnerCap];  // rows below child[i]
    };

    // ---- rows -------------------------------------------------------------
    std::vector<std::unique_ptr<Row[]>> chunks;
    quint32 nextId = 0;
    std::vector<quint32> freeIds;
    quint32 live = 0;

    Row &row(quint32 id) { return chunks[id >> ChunkBits][id & (ChunkSize - 1)]; }
    const Row &row(quint32 id) const { return chunks[id >> ChunkBits][id & (ChunkSize - 1)]; }

    // ---- key pool -----------------------------------------------------------
    // Keys never change, so they are packed into blocks that never move
    // instead of one allocation each. The place of a removed key isn't
    // reused; removals are rare next to what a table holds.
    static constexpr qsizetype KeyBlockChars = 16384;
    std::vector<std::unique_ptr<char16_t[]>> keyBlocks;
    qsizetype keyBlockFree = 0;  // characters left in the last block

    const char16_t *storeKey(QStringView key)
    {
        const qsizetype n = key.size();
        char16_t *at;
        if (n > KeyBlockChars / 4) {
            // A long key gets a block of its own, kept in front of the open one.
            std::unique_ptr<char16_t[]> own(new char16_t[size_t(n)]);
            at = own.get();
            keyBlocks.insert(keyBlocks.empty() ? keyBlocks.end() : keyBlocks.end() - 1, std::move(own));
        } else {
            if (keyBlockFree < n) {
                keyBlocks.emplace_back(new char16_t[size_t(KeyBlockChars)]);
                keyBlockFree = KeyBlockChars;
            }
            at = keyBlocks.back().get() + (KeyBlockChars - keyBlockFree);
            keyBlockFree -= n;
        }
        std::copy(key.utf16(), key.utf16() + n, at);
        return at;
    }

    template <typename T>
    quint32 newRow(QStringView key, T &&textIn)
    {
        QString text = compact(std::forward<T>(textIn));
        // Everything that may fail to allocate comes before a row id is taken.
        const char16_t *keyAt = storeKey(key);
        if (freeIds.empty() && (nextId >> ChunkBits) >= chunks.size()) {
            auto chunk = std::make_unique<Row[]>(ChunkSize);
            chunks.push_back(std::move(chunk));
        }
        quint32 id;
        if (!freeIds.empty()) {
            id = freeIds.back();
            freeIds.pop_back();
        } else {
            id = nextId++;
        }
        Row &r = row(id);
        r.keyAt = keyAt;
        r.keyLen = quint32(key.size());
        r.text = std::move(text);
        ++live;
        return id;
    }
    void freeRow(quint32 id)
    {
        Row &r = row(id);
        r.keyAt = nullptr;
        r.keyLen = 0;
        r.text = QString();
        r.where = Nil;
        freeIds.push_back(id);
        --live;
    }

    // ---- key index --------------------------------------------------------
    // Slot: (hash << 32) | (id + 1); 0 is empty.
    std::vector<quint64> keySlots;
    quint64 mask = 0;

    static quint32 slotId(quint64 s) { return quint32(s) - 1; }

    qint64 findSlot(QStringView key, quint32 h) const
    {
        if (keySlots.empty()) return -1;
        for (quint64 i = h & mask;; i = (i + 1) & mask) {
            const quint64 s = keySlots[i];
            if (s == 0) return -1;
            if (quint32(s >> 32) == h && row(slotId(s)).key() == key) return qint64(i);
        }
    }
    quint32 find(QStringView key) const
    {
        const qint64 s = findSlot(key, hashKey(key));
        return s < 0 ? Nil : slotId(keySlots[size_t(s)]);
    }
    void placeSlot(quint64 s)
    {
        for (quint64 i = (s >> 32) & mask;; i = (i + 1) & mask)
            if (keySlots[i] == 0) {
                keySlots[i] = s;
                return;
            }
    }
    void reserveSlots(quint64 rows)
    {
        // Load factor at most 3/4.
        quint64 want = 16;
        while (want * 3 < rows * 4) want <<= 1;
        if (want <= keySlots.size()) return;
        std::vector<quint64> old;
        old.swap(keySlots);
        keySlots.reserve(want);
        adviseHugePages(keySlots.data(), want * sizeof(quint64));
        keySlots.assign(want, 0);
        mask = want - 1;
        for (quint64 s : old)
            if (s) placeSlot(s);
    }
    void indexKey(quint32 id, quint32 h)
    {
        reserveSlots(quint64(live) + 1);
        placeSlot((quint64(h) << 32) | (quint64(id) + 1));
    }
    void unindexSlot(quint64 i)
    {
        // Backward-shift deletion keeps probe chains unbroken without tombstones.
        quint64 hole = i;
        for (quint64 j = (i + 1) & mask;; j = (j + 1) & mask) {
            const quint64 s = keySlots[j];
            if (s == 0) break;
            const quint64 home = (s >> 32) & mask;
            // Move s into the hole if its home is not in (hole, j].
            const bool between = hole <= j ? (home > hole && home <= j) : (home > hole || home <= j);
            if (!between) {
                keySlots[hole] = s;
                hole = j;
            }
        }
        keySlots[hole] = 0;
    }

    // ---- order ------------------------------------------------------------
    std::vector<Leaf> leaves;
    std::vector<quint32> freeLeaves;
    std::vector<Inner> inners;
    std::vector<quint32> freeInners;
    quint32 root = Nil;
    int height = 0;  // 0: the root is a leaf
    quint32 treeCount = 0;
    std::vector<quint32> pending;  // appended rows, in order, behind the tree

    quint32 total() const { return treeCount + quint32(pending.size()); }

    quint32 newLeaf()
    {
        if (!freeLeaves.empty()) {
            const quint32 id = freeLeaves.back();
            freeLeaves.pop_back();
            leaves[id] = Leaf();
            return id;
        }
        leaves.emplace_back();
        return quint32(leaves.size() - 1);
    }
    quint32 newInner()
    {
        if (!freeInners.empty()) {
            const quint32 id = freeInners.back();
            freeInners.pop_back();
            inners[id] = Inner();
            return id;
        }
        inners.emplace_back();
        return quint32(inners.size() - 1);
    }
    void freeNode(quint32 node, int level)
    {
        if (level == 0) freeLeaves.push_back(node);
        else freeInners.push_back(node);
    }
    quint32 &parentOf(quint32 node, int level)
    {
        return level == 0 ? leaves[node].parent : inners[node].parent;
    }
    quint32 entries(quint32 node, int level) const
    {
        return level == 0 ? leaves[node].n : inners[node].n;
    }
    quint32 rowsBelow(quint32 node, int level) const
    {
        if (level == 0) return leaves[node].n;
        const Inner &in = inners[node];
        quint32 sum = 0;
        for (quint32 i = 0; i < in.n; ++i) sum += in.cnt[i];
        return sum;
    }
    int childIndex(quint32 parent, quint32 node) const
    {
        const Inner &in = inners[parent];
        for (quint32 i = 0; i < in.n; ++i)
            if (in.child[i] == node) return int(i);
        return -1;
    }
    // Recomputes the counts on the path from node to the root.
    void refreshUp(quint32 node, int level)
    {
        for (quint32 p = parentOf(node, level); p != Nil; p = inners[p].parent) {
            inners[p].cnt[childIndex(p, node)] = rowsBelow(node, level);
            node = p;
            ++level;
        }
    }

    quint32 firstRowOf(quint32 node, int level) const
    {
        for (; level > 0; --level) node = inners[node].child[0];
        return leaves[node].ids[0];
    }

    quint32 rowAt(quint32 pos) const
    {  // 0-based, pos < total()
        if (pos >= treeCount) return pending[pos - treeCount];
        quint32 node = root;
        for (int level = height; level > 0; --level) {
            const Inner &in = inners[node];
            quint32 i = 0;
            while (pos >= in.cnt[i]) pos -= in.cnt[i++];
            node = in.child[i];
        }
        return leaves[node].ids[pos];
    }

    quint32 positionOf(quint32 id) const
    {  // 0-based
        const quint32 where = row(id).where;
        if (where & PendingTag) return treeCount + (where & ~PendingTag);
        const Leaf &leaf = leaves[where];
        quint32 pos = 0;
        while (leaf.ids[pos] != id) ++pos;
        quint32 node = where;
        for (quint32 p = leaf.parent; p != Nil; p = inners[p].parent) {
            const Inner &in = inners[p];
            for (quint32 i = 0; in.child[i] != node; ++i) pos += in.cnt[i];
            node = p;
        }
        return pos;
    }

    // Puts right into the tree just after left, both at level; splits upward as needed.
    void insertAfter(quint32 left, quint32 right, int level)
    {
        const quint32 p = parentOf(left, level);
        if (p == Nil) {
            const quint32 r = newInner();
            Inner &in = inners[r];
            in.n = 2;
            in.child[0] = left;
            in.child[1] = right;
            in.cnt[0] = rowsBelow(left, level);
            in.cnt[1] = rowsBelow(right, level);
            parentOf(left, level) = r;
            parentOf(right, level) = r;
            root = r;
            ++height;
            return;
        }
        quint32 target = p;
        int at = childIndex(p, left) + 1;
        if (inners[p].n == InnerCap) {
            const quint32 q = newInner();
            Inner &a = inners[p];
            Inner &b = inners[q];
            const quint32 half = InnerCap / 2;
            b.n = a.n - half;
            std::memcpy(b.child, a.child + half, b.n * sizeof(quint32));
            std::memcpy(b.cnt, a.cnt + half, b.n * sizeof(quint32));
            a.n = half;
            for (quint32 i = 0; i < b.n; ++i) parentOf(b.child[i], level) = q;
            if (quint32(at) > half) {
                target = q;
                at -= int(half);
            }
            insertChildAt(target, at, right, level);
            inners[target].cnt[at - 1] = rowsBelow(left, level);
            insertAfter(p, q, level + 1);
            return;
        }
        insertChildAt(target, at, right, level);
        inners[target].cnt[at - 1] = rowsBelow(left, level);
    }
    void insertChildAt(quint32 p, int at, quint32 node, int level)
    {
        Inner &in = inners[p];
        std::memmove(in.child + at + 1, in.child + at, (in.n - quint32(at)) * sizeof(quint32));
        std::memmove(in.cnt + at + 1, in.cnt + at, (in.n - quint32(at)) * sizeof(quint32));
        in.child[at] = node;
        in.cnt[at] = rowsBelow(node, level);
        ++in.n;
        parentOf(node, level) = p;
    }

    void insertIntoLeaf(quint32 leafId, quint32 at, quint32 id)
    {
        if (leaves[leafId].n == LeafCap) {
            const quint32 rightId = newLeaf();  // may move the leaves vector
            Leaf &a = leaves[leafId];
            Leaf &b = leaves[rightId];
            const quint32 half = LeafCap / 2;
            b.n = a.n - half;
            std::memcpy(b.ids, a.ids + half, b.n * sizeof(quint32));
            a.n = half;
            for (quint32 i = 0; i < b.n; ++i) row(b.ids[i]).where = rightId;
            quint32 target = leafId;
            if (at > half) {
                target = rightId;
                at -= half;
            }
            placeInLeaf(target, at, id);
            insertAfter(leafId, rightId, 0);
            refreshUp(target, 0);
        } else {
            placeInLeaf(leafId, at, id);
            refreshUp(leafId, 0);
        }
        ++treeCount;
    }
    void placeInLeaf(quint32 leafId, quint32 at, quint32 id)
    {
        Leaf &l = leaves[leafId];
        std::memmove(l.ids + at + 1, l.ids + at, (l.n - at) * sizeof(quint32));
        l.ids[at] = id;
        ++l.n;
        row(id).where = leafId;
    }

    // Inserts after every row whose text compares equal; returns the 0-based position.
    quint32 insertSorted(quint32 id)
    {
        if (root == Nil) {
            root = newLeaf();
            height = 0;
        }
        const QStringView text = row(id).text;
        quint32 node = root;
        quint32 pos = 0;
        for (int level = height; level > 0; --level) {
            const Inner &in = inners[node];
            // First child whose first row sorts after text; step into the one before.
            quint32 lo = 1, hi = in.n;
            while (lo < hi) {
                const quint32 mid = (lo + hi) / 2;
                if (compareRowText(text, row(firstRowOf(in.child[mid], level - 1)).text) < 0) hi = mid;
                else lo = mid + 1;
            }
            for (quint32 i = 0; i + 1 < lo; ++i) pos += in.cnt[i];
            node = in.child[lo - 1];
        }
        const Leaf &leaf = leaves[node];
        quint32 lo = 0, hi = leaf.n;
        while (lo < hi) {
            const quint32 mid = (lo + hi) / 2;
            if (compareRowText(text, row(leaf.ids[mid]).text) < 0) hi = mid;
            else lo = mid + 1;
        }
        insertIntoLeaf(node, lo, id);
        return pos + lo;
    }

    void appendToTree(quint32 id)
    {
        if (root == Nil) {
            root = newLeaf();
            height = 0;
        }
        quint32 node = root;
        for (int level = height; level > 0; --level) node = inners[node].child[inners[node].n - 1];
        insertIntoLeaf(node, leaves[node].n, id);
    }

    void removeFromTree(quint32 id)
    {
        quint32 node = row(id).where;
        {
            Leaf &l = leaves[node];
            quint32 k = 0;
            while (l.ids[k] != id) ++k;
            std::memmove(l.ids + k, l.ids + k + 1, (l.n - k - 1) * sizeof(quint32));
            --l.n;
        }
        --treeCount;
        int level = 0;
        for (;;) {
            const quint32 p = parentOf(node, level);
            if (p == Nil) break;
            int j = childIndex(p, node);
            const quint32 n = entries(node, level);
            const quint32 cap = level == 0 ? LeafCap : InnerCap;
            if (n == 0) {
                removeChildAt(p, j);
                freeNode(node, level);
            } else {
                inners[p].cnt[j] = rowsBelow(node, level);
                if (n <= cap / 4) {
                    const Inner &in = inners[p];
                    if (quint32(j) + 1 < in.n && n + entries(in.child[j + 1], level) <= cap) {
                        mergeInto(node, in.child[j + 1], level);
                        inners[p].cnt[j] = rowsBelow(node, level);
                        removeChildAt(p, j + 1);
                    } else if (j > 0 && n + entries(in.child[j - 1], level) <= cap) {
                        const quint32 left = in.child[j - 1];
                        mergeInto(left, node, level);
                        inners[p].cnt[j - 1] = rowsBelow(left, level);
                        removeChildAt(p, j);
                    }
                }
            }
            node = p;
            ++level;
        }
        // A root with a single child is one level too many.
        while (height > 0 && inners[root].n == 1) {
            const quint32 only = inners[root].child[0];
            freeNode(root, height);
            --height;
            root = only;
            parentOf(root, height) = Nil;
        }
        if (height == 0 && root != Nil && leaves[root].n == 0) {
            freeNode(root, 0);
            root = Nil;
        }
        if (height > 0 && inners[root].n == 0) {  // cannot happen with rows left, but stay consistent
            freeNode(root, height);
            root = Nil;
            height = 0;
        }
    }
    // Moves all entries of `from` to the end of `into` and frees `from`.
    void mergeInto(quint32 into, quint32 from, int level)
    {
        if (level == 0) {
            Leaf &a = leaves[into];
            const Leaf &b = leaves[from];
            for (quint32 i = 0; i < b.n; ++i) {
                a.ids[a.n++] = b.ids[i];
                row(b.ids[i]).where = into;
            }
        } else {
            Inner &a = inners[into];
            const Inner &b = inners[from];
            for (quint32 i = 0; i < b.n; ++i) {
                a.child[a.n] = b.child[i];
                a.cnt[a.n] = b.cnt[i];
                ++a.n;
                parentOf(b.child[i], level - 1) = into;
            }
        }
        freeNode(from, level);
    }
    void removeChildAt(quint32 p, int j)
    {
        Inner &in = inners[p];
        std::memmove(in.child + j, in.child + j + 1, (in.n - quint32(j) - 1) * sizeof(quint32));
        std::memmove(in.cnt + j, in.cnt + j + 1, (in.n - quint32(j) - 1) * sizeof(quint32));
        --in.n;
    }

    void collect(quint32 node, int level, std::vector<quint32> &out) const
    {
        if (level == 0) {
            const Leaf &l = leaves[node];
            out.insert(out.end(), l.ids, l.ids + l.n);
            return;
        }
        const Inner &in = inners[node];
        for (quint32 i = 0; i < in.n; ++i) collect(in.child[i], level - 1, out);
    }
    std::vector<quint32> order() const
    {
        std::vector<quint32> out;
        out.reserve(total());
        if (root != Nil) collect(root, height, out);
        out.insert(out.end(), pending.begin(), pending.end());
        return out;
    }

    // Builds the tree from rows in the given order, every node evenly filled.
    // All memory is taken before the old tree is given up, so a failure to
    // allocate leaves the table as it was.
    void build(const std::vector<quint32> &ids)
    {
        const quint64 n = ids.size();
        const quint64 leafCount = (n + LeafCap - 1) / LeafCap;
        quint64 innerCount = 0;
        for (quint64 m = leafCount; m > 1; m = (m + InnerCap - 1) / InnerCap) innerCount += (m + InnerCap - 1) / InnerCap;
        // Some spare room, so the first adds after a load don't copy every
        // node to grow; pages never touched cost no memory.
        std::vector<Leaf> newLeaves;
        newLeaves.reserve(leafCount + leafCount / 8 + 4);
        newLeaves.resize(leafCount);
        std::vector<Inner> newInners;
        newInners.reserve(innerCount + innerCount / 8 + 8);
        newInners.resize(innerCount);
        std::vector<quint32> level(leafCount), up((leafCount + InnerCap - 1) / InnerCap);

        leaves.swap(newLeaves);
        inners.swap(newInners);
        std::vector<quint32>().swap(freeLeaves);
        std::vector<quint32>().swap(freeInners);
        std::vector<quint32>().swap(pending);
        root = Nil;
        height = 0;
        treeCount = quint32(n);
        if (n == 0) return;

        for (quint64 i = 0, start = 0; i < leafCount; ++i) {
            const quint64 end = n * (i + 1) / leafCount;
            Leaf &l = leaves[i];
            l.n = quint32(end - start);
            for (quint64 k = start; k < end; ++k) {
                l.ids[k - start] = ids[k];
                row(ids[k]).where = quint32(i);
            }
            level[i] = quint32(i);
            start = end;
        }
        quint64 m = leafCount;
        quint32 nextInner = 0;
        int h = 0;
        while (m > 1) {
            const quint64 groups = (m + InnerCap - 1) / InnerCap;
            for (quint64 g = 0, start = 0; g < groups; ++g) {
                const quint64 end = m * (g + 1) / groups;
                const quint32 id = nextInner++;
                Inner &in = inners[id];
                for (quint64 k = start; k < end; ++k) {
                    in.child[in.n] = level[k];
                    in.cnt[in.n] = rowsBelow(level[k], h);
                    ++in.n;
                    parentOf(level[k], h) = id;
                }
                up[g] = id;
                start = end;
            }
            std::copy(up.begin(), up.begin() + qsizetype(groups), level.begin());
            m = groups;
            ++h;
        }
        root = level[0];
        height = h;
    }

    // Growth by doubling, ahead of a change that must not fail half-way.
    template <typename V>
    static void spare(V &v, size_t k)
    {
        if (v.capacity() - v.size() < k) v.reserve(std::max(v.capacity() * 2, v.size() + k));
    }
    // Room for the nodes that `inserts` rows added at one place may need.
    void spareForInserts(size_t inserts)
    {
        spare(leaves, inserts / 16 + 2);
        spare(inners, inserts / 256 + 2 * size_t(height) + 8);
    }
    void spareForRemove()
    {
        spare(freeLeaves, 2);
        spare(freeInners, 2 * size_t(height) + 4);
        spare(freeIds, 1);
    }

    // Brings appended rows into the tree before a change that needs it.
    void settle()
    {
        if (pending.empty()) return;
        if (pending.size() > treeCount / 8) {
            build(order());
            return;
        }
        spareForInserts(pending.size());
        for (quint32 id : pending) appendToTree(id);
        std::vector<quint32>().swap(pending);
    }

    quint32 checkedRowAt(int index) const
    {
        if (index < 1 || quint32(index) > total())
            throw KeyedListError("KeyedList: position " + std::to_string(index) + " is out of range 1.." + std::to_string(total()));
        return rowAt(quint32(index - 1));
    }
    quint32 checkedFind(QStringView key) const
    {
        const quint32 id = find(key);
        if (id == Nil) throw KeyedListError("KeyedList: no row has the key \"" + key.toString().toStdString() + "\"");
        return id;
    }
    void checkNewKey(const QString &key) const
    {
        if (key.isEmpty()) throw KeyedListError("KeyedList: a row key cannot be empty");
        if (find(key) != Nil)
            throw KeyedListError("KeyedList: the key \"" + key.toStdString() + "\" is already in the table");
    }

    // Bulk append: one hash, one probe for both the duplicate test and the
    // free slot the new key takes.
    template <typename K, typename T>
    void appendRow(K &&key, T &&text)
    {
        if (key.isEmpty()) throw KeyedListError("KeyedList: a row key cannot be empty");
        const quint32 h = hashKey(key);
        reserveSlots(quint64(live) + 1);
        quint64 i = h & mask;
        for (;; i = (i + 1) & mask) {
            const quint64 s = keySlots[i];
            if (s == 0) break;
            if (quint32(s >> 32) == h && row(slotId(s)).key() == key)
                throw KeyedListError("KeyedList: the key \"" + QString(key).toStdString() + "\" is already in the table");
        }
        if (pending.size() == pending.capacity()) pending.reserve(std::max<size_t>(64, pending.size() * 2));
        const quint32 id = newRow(key, std::forward<T>(text));
        row(id).where = PendingTag | quint32(pending.size());
        pending.push_back(id);
        keySlots[i] = (quint64(h) << 32) | (quint64(id) + 1);
    }

    template <typename Fn>
    bool walk(quint32 node, int level, Fn &fn) const
    {
        if (level == 0) {
            const Leaf &l = leaves[node];
            for (quint32 i = 0; i < l.n; ++i)
                if (!fn(row(l.ids[i]))) return false;
            return true;
        }
        const Inner &in = inners[node];
        for (quint32 i = 0; i < in.n; ++i)
            if (!walk(in.child[i], level - 1, fn)) return false;
        return true;
    }
    template <typename Fn>
    void walkAll(Fn &&fn) const
    {
        if (root != Nil && !walk(root, height, fn)) return;
        for (quint32 id : pending)
            if (!fn(row(id))) return;
    }
};

KeyedList::KeyedList() : d(new Impl) {}
KeyedList::~KeyedList() = default;
KeyedList::KeyedList(KeyedList &&o) noexcept : d(std::move(o.d)) { o.d.reset(new Impl); }
KeyedList &KeyedList::operator=(KeyedList &&o) noexcept
{
    d.swap(o.d);
    return *this;
}
void KeyedList::swap(KeyedList &o) noexcept { d.swap(o.d); }

int KeyedList::count() const { return int(d->total()); }

void KeyedList::clear() { d.reset(new Impl); }

int KeyedList::add(const QString &key, const QString &text)
{
    d->checkNewKey(key);
    d->settle();
    const quint32 h = hashKey(key);
    // Take all memory first: a failure must not leave a row half-added.
    d->reserveSlots(quint64(d->live) + 1);
    d->spareForInserts(1);
    const quint32 id = d->newRow(key, text);
    const quint32 pos = d->insertSorted(id);
    d->indexKey(id, h);
    return int(pos) + 1;
}

void KeyedList::append(const QString &key, const QString &text) { d->appendRow(key, text); }
void KeyedList::append(QString &&key, QString &&text) { d->appendRow(std::move(key), std::move(text)); }

void KeyedList::reserve(int n)
{
    if (n <= 0) return;
    const quint64 rows = quint64(n);
    d->reserveSlots(rows);
    if (rows > d->total()) d->pending.reserve(d->pending.size() + (rows - d->total()));
    d->chunks.reserve(size_t((rows + ChunkSize - 1) >> ChunkBits));
}

void KeyedList::prefetch(QStringView key) const
{
#if defined(__GNUC__) || defined(__clang__)
    if (!d->keySlots.empty()) __builtin_prefetch(&d->keySlots[hashKey(key) & d->mask]);
#else
    Q_UNUSED(key);
#endif
}

bool KeyedList::contains(QStringView key) const { return d->find(key) != Nil; }

int KeyedList::indexOf(QStringView key) const
{
    const quint32 id = d->find(key);
    return id == Nil ? 0 : int(d->positionOf(id)) + 1;
}

QString KeyedList::key(int index) const { return d->row(d->checkedRowAt(index)).key().toString(); }
QString KeyedList::text(int index) const { return d->row(d->checkedRowAt(index)).text; }
QStringView KeyedList::keyView(int index) const { return d->row(d->checkedRowAt(index)).key(); }
QStringView KeyedList::textView(int index) const { return d->row(d->checkedRowAt(index)).text; }
QString KeyedList::textOf(QStringView key) const { return d->row(d->checkedFind(key)).text; }

void KeyedList::setText(int index, const QString &text) { d->row(d->checkedRowAt(index)).text = compact(text); }
void KeyedList::setText(int index, QString &&text) { d->row(d->checkedRowAt(index)).text = compact(std::move(text)); }
void KeyedList::setTextOf(QStringView key, const QString &text) { d->row(d->checkedFind(key)).text = compact(text); }

void KeyedList::remove(QStringView key)
{
    const quint32 h = hashKey(key);
    const qint64 slot = d->findSlot(key, h);
    if (slot < 0) d->checkedFind(key);  // throws with the message
    d->settle();
    d->spareForRemove();
    const quint32 id = Impl::slotId(d->keySlots[size_t(slot)]);
    d->removeFromTree(id);
    d->unindexSlot(quint64(slot));
    d->freeRow(id);
}

namespace {

// Stable sort of row texts. Positions in the current order (seq) break ties,
// so an unstable algorithm gives the stable result.
class RowSorter {
public:
    explicit RowSorter(std::vector<const QString *> texts) : m_texts(std::move(texts)) {}

    // Returns the seq numbers in sorted order.
    std::vector<quint32> run()
    {
        const quint32 n = quint32(m_texts.size());
        // Tables are usually in order or nearly so (a few renamed rows):
        // keep the rows that are in order, sort only the others, then merge.
        std::vector<quint32> kept, misfits;
        kept.reserve(n);
        const quint32 limit = n / 8 + 16;
        for (quint32 i = 0; i < n && misfits.size() <= limit; ++i) {
            if (kept.empty() || !less(i, kept.back())) {
                kept.push_back(i);
            } else if (kept.size() >= 2 && !less(i, kept[kept.size() - 2]) && (i + 1 == n || less(i + 1, kept.back()))) {
                // The last kept row is the one out of place: it is above two rows in a row.
                misfits.push_back(kept.back());
                kept.back() = i;
            } else {
                misfits.push_back(i);
            }
        }
        if (misfits.empty()) return kept;
        if (misfits.size() > limit) {
            std::vector<quint32>().swap(kept);
            std::vector<quint32>().swap(misfits);
            std::vector<quint32> all(n);
            for (quint32 i = 0; i < n; ++i) all[i] = i;
            sortSeqs(all);
            return all;
        }
        sortSeqs(misfits);
        std::vector<quint32> out;
        out.reserve(n);
        std::merge(kept.begin(), kept.end(), misfits.begin(), misfits.end(), std::back_inserter(out),
                   [this](quint32 a, quint32 b) { return before(a, b); });
        return out;
    }

private:
    struct Item {
        quint64 chunk;
        const QString *text;
        qsizetype pos;  // where the next chunk of text starts
        quint32 seq;
    };

    std::vector<const QString *> m_texts;

    bool less(quint32 a, quint32 b) const { return compareRowText(*m_texts[a], *m_texts[b]) < 0; }
    bool before(quint32 a, quint32 b) const
    {
        const int c = compareRowText(*m_texts[a], *m_texts[b]);
        return c < 0 || (c == 0 && a < b);
    }
    static bool itemBefore(const Item &a, const Item &b)
    {
        const int c = compareRowText(*a.text, *b.text);
        return c < 0 || (c == 0 && a.seq < b.seq);
    }

    // Archived rows go last; the rest is a multikey sort on chunks of four
    // first-level weights: sort a group by its current chunk, then go on with
    // each run of equal chunks one chunk deeper. Small groups and groups that
    // ran out of text are finished by full comparison.
    void sortSeqs(std::vector<quint32> &seqs) const
    {
        std::vector<Item> items;
        items.reserve(seqs.size());
        for (quint32 s : seqs) items.push_back({0, m_texts[s], 0, s});
        const auto firstArchived = std::stable_partition(
            items.begin(), items.end(), [](const Item &it) { return !it.text->startsWith(ArchiveMarkView); });
        std::vector<std::pair<size_t, size_t>> todo;
        const size_t split = size_t(firstArchived - items.begin());
        todo.push_back({0, split});
        todo.push_back({split, items.size()});
        while (!todo.empty()) {
            const auto [lo, hi] = todo.back();
            todo.pop_back();
            if (hi - lo < 2) continue;
            Item *const b = items.data() + lo, *const e = items.data() + hi;
            if (hi - lo <= 24) {
                std::sort(b, e, itemBefore);
                continue;
            }
            for (Item *it = b; it != e; ++it) it->chunk = rowTextSortChunk(*it->text, it->pos);
            bool same = true;
            for (Item *it = b + 1; it != e && same; ++it) same = it->chunk == b->chunk;
            if (!same) std::sort(b, e, [](const Item &x, const Item &y) { return x.chunk < y.chunk; });
            for (Item *run = b; run != e;) {
                Item *end = run + 1;
                while (end != e && end->chunk == run->chunk) ++end;
                if (end - run > 1) {
                    if ((run->chunk & 0xFFFF) == 0) std::sort(run, end, itemBefore);  // texts ended
                    else todo.push_back({size_t(run - items.data()), size_t(end - items.data())});
                }
                run = end;
            }
        }
        for (size_t i = 0; i < items.size(); ++i) seqs[i] = items[i].seq;
    }

    static constexpr QStringView ArchiveMarkView = u"zzzz\u00BB";
};

}  // namespace

void KeyedList::resort()
{
    std::vector<quint32> ids = d->order();
    std::vector<const QString *> texts;
    texts.reserve(ids.size());
    for (quint32 id : ids) texts.push_back(&d->row(id).text);
    const std::vector<quint32> seqs = RowSorter(std::move(texts)).run();
    bool moved = false;
    std::vector<quint32> sorted(ids.size());
    for (size_t i = 0; i < seqs.size(); ++i) {
        sorted[i] = ids[seqs[i]];
        moved = moved || seqs[i] != i;
    }
    if (moved || !d->pending.empty()) d->build(sorted);
}

bool KeyedList::isSorted() const
{
    const QString *prev = nullptr;
    bool sorted = true;
    d->walkAll([&](const Impl::Row &r) {
        if (prev && compareRowText(*prev, r.text) > 0) {
            sorted = false;
            return false;
        }
        prev = &r.text;
        return true;
    });
    return sorted;
}

void KeyedList::forEach(const std::function<bool(QStringView key, QStringView text)> &fn) const
{
    d->walkAll([&](const Impl::Row &r) { return fn(r.key(), r.text); });
}

}  // namespace qor
