/// The exception family through which the library reports every failure.
///
///     try { gpx->FromXmlFile("track.gpx"); }
///     catch (const std::exception& e) { std::cerr << e.what() << '\n'; }
#pragma once

#include <atomic>
#include <exception>
#include <memory>
#include <string>

#include "kvxml/export.h"

namespace KvXmlLib16 {

class CKvException;

namespace internal {

/// The first base of the family: destruction and Clone are the first of its virtual operations, and what
/// comes from `std::exception` follows.
class KVXML_EXPORT CExceptionRoot {
public:
    CExceptionRoot() noexcept = default;
    CExceptionRoot(const CExceptionRoot&) noexcept = default;
    CExceptionRoot& operator=(const CExceptionRoot&) noexcept = default;
    virtual ~CExceptionRoot();

protected:
    virtual CKvException* Clone() const = 0;
};

}  // namespace internal

/// Root of the family: a message, the path of the element or attribute at fault (when one is known) and
/// the exception that caused this one (when there is one).
///
/// Exceptions are plain values; each owns a deep copy of its inner chain.
class KVXML_EXPORT CKvException : public internal::CExceptionRoot, public std::exception {
public:
    CKvException();
    explicit CKvException(std::string message);
    CKvException(std::string message, const CKvException& inner);
    /// A non-empty `path` is kept for `GetPath` and appended to the message as "\nPath: " + path.
    CKvException(std::string message, std::string path);
    CKvException(std::string message, std::string path, const CKvException& inner);

    CKvException(const CKvException& other);
    CKvException(CKvException&& other) noexcept;
    /// Takes over the message and a copy of the inner exception; the path of the target stays as it was.
    CKvException& operator=(const CKvException& other);
    CKvException& operator=(CKvException&& other) noexcept;
    ~CKvException() override;

    /// The message, with the path suffix when a path was given at construction.
    std::string GetMessage() const { return m_message; }
    /// The path given at construction; empty when none was.
    std::string GetPath() const { return m_path; }
    /// This message and those of the inner exceptions, outermost first, one per line.
    std::string GetFullMessage() const;
    /// The full message; without the inner ones when memory is short. Valid until the exception is assigned
    /// to, moved from or destroyed. Several threads may ask for it at once.
    const char* what() const noexcept override;
    /// The causing exception, owned by this one, or null.
    const CKvException* GetInnerException() const { return m_inner.get(); }

protected:
    /// A heap copy of the most-derived type; the caller owns it.
    CKvException* Clone() const override;

private:
    void ForgetWhat() noexcept;

    std::string m_message;
    std::string m_path;
    std::unique_ptr<CKvException> m_inner;
    mutable std::atomic<char*> m_what{nullptr};  // the full message, once somebody has asked for it
};

/// The document does not fit the schema that the metadata describes, or JSON input is ill-formed.
class KVXML_EXPORT CKvValidationException : public CKvException {
public:
    CKvValidationException();
    CKvValidationException(std::string message, std::string path);
    CKvValidationException(std::string message, std::string path, const CKvException& inner);
    /// Takes message, path and inner exception of any exception of the family.
    explicit CKvValidationException(const CKvException& other);
    CKvValidationException(const CKvValidationException& other);
    CKvValidationException(CKvValidationException&& other) noexcept;
    CKvValidationException& operator=(const CKvValidationException& other);
    CKvValidationException& operator=(CKvValidationException&& other) noexcept;
    ~CKvValidationException() override;

protected:
    CKvException* Clone() const override;

private:
    std::string m_detail;  // reserved: copied along, never filled
};

/// An element or attribute is in a namespace that the metadata does not allow.
class KVXML_EXPORT CKvInvalidNamespaceException : public CKvValidationException {
public:
    CKvInvalidNamespaceException();
    CKvInvalidNamespaceException(std::string message, std::string path);
    CKvInvalidNamespaceException(std::string message, std::string path, const CKvException& inner);
    explicit CKvInvalidNamespaceException(const CKvException& other);
    CKvInvalidNamespaceException(const CKvInvalidNamespaceException& other);
    CKvInvalidNamespaceException(CKvInvalidNamespaceException&& other) noexcept;
    CKvInvalidNamespaceException& operator=(const CKvInvalidNamespaceException& other);
    CKvInvalidNamespaceException& operator=(CKvInvalidNamespaceException&& other) noexcept;
    ~CKvInvalidNamespaceException() override;

protected:
    CKvException* Clone() const override;
};

/// The document check of the context refuses the document. The message has the place where there are lines.
class KVXML_EXPORT CKvSchemaValidationException : public CKvValidationException {
public:
    CKvSchemaValidationException();
    CKvSchemaValidationException(std::string message, std::string path);
    CKvSchemaValidationException(std::string message, std::string path, const CKvException& inner);
    explicit CKvSchemaValidationException(const CKvException& other);
    CKvSchemaValidationException(const CKvSchemaValidationException& other);
    CKvSchemaValidationException(CKvSchemaValidationException&& other) noexcept;
    CKvSchemaValidationException& operator=(const CKvSchemaValidationException& other);
    CKvSchemaValidationException& operator=(CKvSchemaValidationException&& other) noexcept;
    ~CKvSchemaValidationException() override;

protected:
    CKvException* Clone() const override;
};

/// Declares one of the classes that differ from their base by their type only.
#define KVXML_DECLARE_EXCEPTION(Class, Base)                   \
    class KVXML_EXPORT Class : public Base {                   \
    public:                                                    \
        Class();                                               \
        explicit Class(std::string message);                   \
        Class(std::string message, const CKvException& inner); \
        explicit Class(const CKvException& other);             \
        Class(const Class& other);                             \
        Class(Class&& other) noexcept;                         \
        Class& operator=(const Class& other);                  \
        Class& operator=(Class&& other) noexcept;              \
        ~Class() override;                                     \
                                                               \
    protected:                                                 \
        CKvException* Clone() const override;                  \
    }

/// A text value cannot be converted to, or does not fit, its XSD type.
KVXML_DECLARE_EXCEPTION(CKvInvalidValueException, CKvValidationException);
/// An operation is not allowed in the object's present state.
KVXML_DECLARE_EXCEPTION(CKvInvalidStateException, CKvException);
/// A caller passed a bad argument or index.
KVXML_DECLARE_EXCEPTION(CKvInvalidParamException, CKvException);
/// A decimal does not fit a native type.
KVXML_DECLARE_EXCEPTION(CKvOverFlowException, CKvException);

#undef KVXML_DECLARE_EXCEPTION

}  // namespace KvXmlLib16
