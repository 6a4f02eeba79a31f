#pragma once

#include <memory>

namespace montala::core {

// The one object of an interface for the whole process, installed by whoever
// hosts Montala and removed when it goes. Each interface derives from this
// with itself as Interface, so that each has a slot of its own:
//
//   class AlertWindowBase : public ProcessInstance<AlertWindowBase> { ... };
template <typename Interface>
class ProcessInstance {
public:
    // The installed instance; null when there is none.
    static Interface* getInstance() { return instance.get(); }
    // Takes ownership. False, and the candidate is dropped, when one is
    // installed already.
    static bool install(std::unique_ptr<Interface> candidate)
    {
        if (instance || !candidate)
            return false;
        instance = std::move(candidate);
        return true;
    }
    // Deletes the installed instance, if any.
    static void remove() { instance.reset(); }

protected:
    ProcessInstance() = default;
    ~ProcessInstance() = default;

private:
    static inline std::unique_ptr<Interface> instance;
};

} // namespace montala::core
