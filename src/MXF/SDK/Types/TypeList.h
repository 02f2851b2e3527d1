#pragma once

// Every concrete value class, in the order of the slots of Visitors::Visitor. For code that treats
// all of them alike: X(Class) is expanded once a class.
#define MXF_SDK_TYPES_FOR_EACH_CLASS(X)                                                            \
    X(J2KQuantisationDefault)                                                                      \
    X(J2KCodingStyleDefault)                                                                       \
    X(J2KPictureComponent)                                                                         \
    X(DataValue)                                                                                   \
    X(SignalStandard)                                                                              \
    X(Orientation)                                                                                 \
    X(RGBALayout)                                                                                  \
    X(StrongReference)                                                                             \
    X(WeakReference)                                                                               \
    X(Unknown)                                                                                     \
    X(VersionType)                                                                                 \
    X(UUID)                                                                                        \
    X(UTF16String)                                                                                 \
    X(UTF16)                                                                                       \
    X(UniversalLabel)                                                                              \
    X(UMID64)                                                                                      \
    X(UMID32)                                                                                      \
    X(UInt8)                                                                                       \
    X(UInt64)                                                                                      \
    X(UInt32)                                                                                      \
    X(UInt16)                                                                                      \
    X(Timestamp)                                                                                   \
    X(Rational)                                                                                    \
    X(ProductVersion)                                                                              \
    X(Position)                                                                                    \
    X(LocalTag)                                                                                    \
    X(Length)                                                                                      \
    X(ISO7String)                                                                                  \
    X(Int8)                                                                                        \
    X(Int64)                                                                                       \
    X(Int32)                                                                                       \
    X(Int16)                                                                                       \
    X(DataStream)                                                                                  \
    X(Boolean)                                                                                     \
    X(Batch)                                                                                       \
    X(Array)
