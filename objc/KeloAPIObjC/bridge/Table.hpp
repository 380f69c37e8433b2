#pragma once

#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Coding.hpp>
#include <KeloAPIObjC/bridge/Completion.hpp>
#include <KeloAPIObjC/bridge/Convert.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>

#include <functional>
#include <type_traits>

// The table that an @implementation is written as: its first line says which C++ class it stands
// for, each further one which member a property is. What converts is chosen by the member's type.

/// `macro(about, x)` for each x of the others.
#define KELO_FOR_EACH(macro, about, ...)                                                           \
    __VA_OPT__(KELO_AGAIN(KELO_AGAIN(KELO_AGAIN(KELO_EACH(macro, about, __VA_ARGS__)))))
#define KELO_EACH(macro, about, first, ...)                                                        \
    macro(about, first) __VA_OPT__(KELO_EACH_AGAIN KELO_PARENTHESES(macro, about, __VA_ARGS__))
#define KELO_EACH_AGAIN() KELO_EACH
#define KELO_PARENTHESES ()
#define KELO_AGAIN(...) KELO_AGAIN_(KELO_AGAIN_(KELO_AGAIN_(__VA_ARGS__)))
#define KELO_AGAIN_(...) __VA_ARGS__

/// A selector with its parameters, told in threes: (part, type, name, part, type, name).
#define KELO_SELECTOR(...) __VA_OPT__(KELO_AGAIN(KELO_PART(__VA_ARGS__)))
#define KELO_PART(part, type, name, ...)                                                           \
    part:                                                                                          \
    (type) name __VA_OPT__(KELO_PART_AGAIN KELO_PARENTHESES(__VA_ARGS__))
#define KELO_PART_AGAIN() KELO_PART

/// First in an @implementation: objects of class `Face` stand for those of the C++ class, which
/// `native(self)` gives from then on. What follows is done when the class is loaded, too.
#define KELO_STANDS_FOR(Face, Native, ...)                                                         \
    [[maybe_unused]] static Native &native(Face *face) {                                           \
        return held<Native>(face);                                                                 \
    }                                                                                              \
    +(void)load {                                                                                  \
        registerClass<Native>(self);                                                               \
        __VA_ARGS__;                                                                               \
    }

#define KELO_NATIVE std::remove_reference_t<decltype(native(self))>

/// Properties of one type that are read: members, or functions of that name.
#define KELO_READS(type, ...) KELO_FOR_EACH(KELO_READ, type, __VA_ARGS__)
#define KELO_READ(type, name)                                                                      \
    -(type)name {                                                                                  \
        return static_cast<type>(toObjC(std::invoke(&KELO_NATIVE::name, native(self))));           \
    }

/// A property that is read and set, and a member.
#define KELO_FIELD(type, name, setter)                                                             \
    KELO_READ(type, name)                                                                          \
    -(void)setter : (type)value {                                                                  \
        assign(native(self).name, value, @ #name);                                                 \
    }

/// The one shape of an initialiser: what stands for a new C++ object made of these. What raises
/// while they are told lets the receiver go.
#define KELO_MAKE(...) adoptMade(self, [&] { return std::make_shared<KELO_NATIVE>(__VA_ARGS__); })

/// `init`, where the C++ object is made of nothing.
#define KELO_INIT()                                                                                \
    -(instancetype)init {                                                                          \
        return KELO_MAKE();                                                                        \
    }

/// An initialiser of this selector that the class does not offer. It stops the process with a text
/// that names it in the native form, as "init(session:)".
#define KELO_REFUSES(nativeForm, ...)                                                              \
    -(instancetype)KELO_SELECTOR(__VA_ARGS__) {                                                    \
        refuse(self, nativeForm);                                                                  \
    }

#define KELO_NO_INIT()                                                                             \
    -(instancetype)init {                                                                          \
        refuse(self, "init()");                                                                    \
    }

/// Equality and hash are those of the C++ class.
#define KELO_COMPARES(Face)                                                                        \
    -(BOOL)isEqual : (id)other {                                                                   \
        return [other isKindOfClass:[Face class]] &&                                               \
               native(self) == native(static_cast<Face *>(other));                                 \
    }                                                                                              \
    -(NSUInteger)hash {                                                                            \
        return std::hash<KELO_NATIVE>()(native(self));                                             \
    }

/// Archives these properties, each under its own name.
#define KELO_ENCODES(...)                                                                          \
    -(void)encodeWithCoder : (NSCoder *)coder {                                                    \
        KELO_FOR_EACH(KELO_ENCODE, coder, __VA_ARGS__)                                             \
    }
#define KELO_ENCODE(coder, name) encode(coder, [self name], @ #name);

/// Reads from an archive what `made` gives, which may be null, and into it these members.
#define KELO_DECODES(made, ...)                                                                    \
    -(instancetype)initWithCoder : (NSCoder *)coder {                                              \
        return adoptMade(self, [&] {                                                               \
            const auto kept = made;                                                                \
            if (kept != nullptr) {                                                                 \
                KELO_FOR_EACH(KELO_DECODE, coder, __VA_ARGS__)                                     \
            }                                                                                      \
            return kept;                                                                           \
        });                                                                                        \
    }
#define KELO_DECODE(coder, name) decode(coder, kept->name, @ #name);

/// A call in both forms: `selector`, in parentheses, with a target and its action behind `byTarget`
/// or a block behind `byBlock`. The expression knows what hears of it as `heard`.
#define KELO_CALLS(result, selector, byTarget, byBlock, ...)                                       \
    -(result)KELO_SELECTOR selector byTarget : (id)target action : (SEL)action {                   \
        const Completion heard(target, action);                                                    \
        return __VA_ARGS__;                                                                        \
    }                                                                                              \
    -(result)KELO_SELECTOR selector byBlock : (id)block {                                          \
        const Completion heard(block);                                                             \
        return __VA_ARGS__;                                                                        \
    }
