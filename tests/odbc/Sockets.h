#pragma once

#include <arpa/inet.h>
#include <cstdint>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

/// A TCP socket on the loopback interface, closed at the end.
class LoopbackSocket
{
public:
    explicit LoopbackSocket(int descriptor)
        : m_descriptor(descriptor)
    {
        if (descriptor < 0)
            throw std::runtime_error("no socket");
    }
    ~LoopbackSocket() { ::close(m_descriptor); }
    LoopbackSocket(const LoopbackSocket &) = delete;
    LoopbackSocket &operator=(const LoopbackSocket &) = delete;

    int get() const { return m_descriptor; }

private:
    int m_descriptor;
};

inline sockaddr_in loopbackAddress(std::uint16_t port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

/// Listens at a free port. Unless somebody accepts, whoever connects waits for an answer forever.
class ListeningSocket : public LoopbackSocket
{
public:
    ListeningSocket()
        : LoopbackSocket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address = loopbackAddress(0);
        socklen_t size = sizeof address;
        if (::bind(get(), reinterpret_cast<sockaddr *>(&address), size) != 0 ||
            ::listen(get(), 16) != 0 ||
            ::getsockname(get(), reinterpret_cast<sockaddr *>(&address), &size) != 0)
            throw std::runtime_error("cannot listen on loopback");
        m_port = ntohs(address.sin_port);
    }

    std::uint16_t port() const { return m_port; }

private:
    std::uint16_t m_port = 0;
};

/// A port at which nobody listens.
inline std::uint16_t freePort()
{
    return ListeningSocket().port();
}
