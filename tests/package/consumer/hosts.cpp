// A host in C++17: it sees the public interfaces and links the shared library.

#include <qorl/FInterface.h>
#include <qorl/Ref.h>

#include <cstdio>

extern "C" qorl::FInterface* GetHostClasses();
extern "C" void TerminateModule();

int main() {
    qorl::FInterface* classes = GetHostClasses();
    if (!classes) {
        std::fprintf(stderr, "no host classes\n");
        return 1;
    }
    void* face = nullptr;
    if (classes->queryInterface(qorl::FInterface::iid, &face) != qorl::Result::ok || !face) {
        std::fprintf(stderr, "the host classes do not answer the root interface\n");
        return 1;
    }
    static_cast<qorl::FInterface*>(face)->release();
    TerminateModule();
    std::puts("hosts: entered and left");
    return 0;
}
