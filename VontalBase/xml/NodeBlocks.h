/// @internal
/// @file
/// The nodes that a document has made.
#pragma once

#include "VontalBase/platform/blocks.h"
#include "VontalBase/xml/XMLNodeImpl.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <vector>

namespace qvxml
{

/// Makes nodes one behind the other in large blocks, since a document is walked in the order in which its
/// nodes were made. They die together.
class NodeBlocks
{
public:
    NodeBlocks() = default;
    NodeBlocks(const NodeBlocks &) = delete;
    NodeBlocks & operator=(const NodeBlocks &) = delete;
    ~NodeBlocks()
    {
        clear();
    }

    /// Makes a node, from what its constructor takes.
    XMLNodeImpl & make(
        XMLDocPtr * owner, IXMLDOMElement * domElement, const qvplatform::DirectXml * directWay)
    {
        if (m_blocks.empty() || m_blocks.back().used == m_blocks.back().size)
            grow();
        Block & block = m_blocks.back();
        XMLNodeImpl * const node =
            new (block.places[block.used].bytes) XMLNodeImpl(owner, domElement, directWay);
        ++block.used;
        return *node;
    }

    /// Destroys the node that was made last.
    void removeLast()
    {
        Block & block = m_blocks.back();
        --block.used;
        block.at(block.used).~XMLNodeImpl();
    }

    /// Calls @p visit with each node.
    template <class Visit>
    void forEach(Visit visit)
    {
        for (Block & block : m_blocks)
        {
            for (std::size_t i = 0; i < block.used; ++i)
                visit(block.at(i));
        }
    }

    /// Destroys all nodes.
    void clear()
    {
        forEach([](XMLNodeImpl & node) { node.~XMLNodeImpl(); });
        m_blocks.clear();
    }

private:
    struct Place
    {
        alignas(XMLNodeImpl) std::byte bytes[sizeof(XMLNodeImpl)];
    };

    /// Gives places back to where they come from.
    struct GiveBack
    {
        std::size_t size = 0;

        void operator()(Place * places) const noexcept
        {
            if (isLarge(size))
                qvplatform::giveBlock(places, size * sizeof(Place));
            else
                delete[] places;
        }
    };

    struct Block
    {
        XMLNodeImpl & at(std::size_t i)
        {
            return *std::launder(reinterpret_cast<XMLNodeImpl *>(places[i].bytes));
        }

        std::unique_ptr<Place[], GiveBack> places;
        std::size_t size = 0;
        std::size_t used = 0;
    };

    static constexpr std::size_t firstSize = 8;
    static constexpr std::size_t mostAtOnce = 32768;

    static bool isLarge(std::size_t size) noexcept
    {
        return size * sizeof(Place) >= qvplatform::leastBlock;
    }

    static Place * take(std::size_t size)
    {
        if (!isLarge(size))
            return new Place[size];
        void * const block = qvplatform::takeBlock(size * sizeof(Place));
        if (block == nullptr)
            throw std::bad_alloc();
        return static_cast<Place *>(block);
    }

    void grow()
    {
        const std::size_t size =
            m_blocks.empty() ? firstSize : std::min(m_blocks.back().size * 2, mostAtOnce);
        m_blocks.push_back({std::unique_ptr<Place[], GiveBack>(take(size), GiveBack{size}), size});
    }

    std::vector<Block> m_blocks;
};

} // namespace qvxml
