#pragma once

namespace kestrav {

/// A shared library that is loaded when one of its functions is called for the first time, instead of at the program's
/// start. libsystemd and libmount bring ten libraries more with them: to load them all takes longer than to look for
/// the accessory, and an update by the service calls none of them.
///
/// Callers know nothing of it: the functions are defined here under the library's own names, and pass on to it.
class LateLibrary {
  public:
    /// `name` as the dynamic loader knows it ("libmount.so.1"); it outlives this object.
    explicit constexpr LateLibrary(const char* name) : name_(name) {}

    /// The function of that name. Where it is missing the process ends as one does whose libraries the dynamic loader
    /// can't find at its start: in the loader's words, with status 127.
    template <class Function>
    Function* function(const char* name) const {
        return reinterpret_cast<Function*>(find(name));
    }

  private:
    void* find(const char* function) const;

    const char* name_;
};

}  // namespace kestrav
