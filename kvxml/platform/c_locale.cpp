#include "kvxml/platform/internal/c_locale.h"

#include <locale.h>

namespace KvXmlLib16::internal {

namespace {

// Created once and kept for the life of the process, since threads may have it installed at any time.
locale_t CLocale() noexcept {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
}

}  // namespace

CScopedCLocale::CScopedCLocale() noexcept : m_previous(nullptr) {
    if (const locale_t locale = CLocale()) m_previous = uselocale(locale);
}

CScopedCLocale::~CScopedCLocale() {
    if (m_previous != nullptr) uselocale(static_cast<locale_t>(m_previous));
}

}  // namespace KvXmlLib16::internal
