#include "kvxml/xml/internal/xml_text_run.h"

#include <new>

namespace KvXmlLib16::internal {

const CSharedTextRuns::Node* CSharedTextRuns::Find(const Node* chain, std::string_view text) {
    Node& last = const_cast<Node&>(*chain);  // nodes are constant to those who hold them
    for (Node* follower = last.firstFollower; follower != nullptr; follower = follower->nextSibling) {
        if (follower->length == text.size() && EqualShort(follower->characters, text.data(), text.size())) {
            last.expected = follower;
            return follower;
        }
    }
    if (text.size() > kMaxLength || text.find_first_not_of(" \t\n") != std::string_view::npos) return nullptr;
    if (last.depth == kMaxDepth || last.followers == kMaxFollowers || m_count == kMaxNodes) return nullptr;
    const char* characters = FindCharacters(text);
    if (characters == nullptr) {
        auto* const copy = static_cast<char*>(m_memory.Allocate(text.size()));
        text.copy(copy, text.size());
        characters = copy;
    }
    void* const memory = m_memory.Allocate(sizeof(Node));
    Node* const node = new (memory) Node{{chain == &m_root ? nullptr : chain, characters, text.size(), 1},
                                         nullptr,
                                         nullptr,
                                         last.firstFollower,
                                         last.depth + 1,
                                         0};
    last.firstFollower = node;
    last.expected = node;
    ++last.followers;
    ++m_count;
    return node;
}

const char* CSharedTextRuns::FindCharacters(std::string_view text) const noexcept {
    for (const Node* node = m_root.firstFollower; node != nullptr; node = node->nextSibling) {
        if (std::string_view(node->characters, node->length) == text) return node->characters;
    }
    return nullptr;
}

}  // namespace KvXmlLib16::internal
