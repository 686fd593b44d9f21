// Output of values to streams, in their XSD form.
#include <ostream>

#include "kvxml/types/big_integer.h"
#include "kvxml/types/date_time.h"
#include "kvxml/types/date_time_span.h"
#include "kvxml/types/decimal.h"

namespace KvXmlLib16 {

std::ostream& operator<<(std::ostream& stream, const CDecimal& value) {
    return stream << value.ToString();
}

std::ostream& operator<<(std::ostream& stream, const CBigInteger& value) {
    return stream << value.ToString();
}

std::ostream& operator<<(std::ostream& stream, const CDateTime& value) {
    return stream << value.ToString();
}

std::ostream& operator<<(std::ostream& stream, const CDateTimeSpan& value) {
    return stream << value.ToString();
}

}  // namespace KvXmlLib16
