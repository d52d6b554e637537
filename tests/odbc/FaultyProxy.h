#pragma once

#include "Sockets.h"

#include <QtGlobal>

#include <algorithm>
#include <array>
#include <atomic>
#include <limits>
#include <poll.h>
#include <thread>
#include <vector>

/// Stands before a server and passes bytes on in both directions, until the server's answers have
/// reached a number of bytes in all: then it stalls or cuts the connection, and stays like that for
/// new connections until it is mended.
class FaultyProxy
{
public:
    enum Fault { Stall, Cut };

    explicit FaultyProxy(std::uint16_t serverPort)
        : m_serverPort(serverPort)
        , m_thread([this] { acceptAll(); })
    {}
    ~FaultyProxy()
    {
        m_ends = true;
        m_thread.join();
    }
    FaultyProxy(const FaultyProxy &) = delete;
    FaultyProxy &operator=(const FaultyProxy &) = delete;

    std::uint16_t port() const { return m_listener.port(); }

    /// Bytes of answers that were passed on since the last call of `breakAfter` or `mend`.
    qint64 passed() const { return m_passed; }

    void breakAfter(qint64 bytes, Fault fault)
    {
        m_isOnce = false;
        m_fault = fault;
        m_passed = 0;
        m_limit = bytes;
    }
    /// The same for one connection; later ones work.
    void breakOnceAfter(qint64 bytes, Fault fault)
    {
        breakAfter(bytes, fault);
        m_isOnce = true;
    }
    /// Closes all connections soon; new ones work.
    void hangUp() { ++m_hungUp; }
    /// Connections that stalled are closed.
    void mend()
    {
        breakAfter(unlimited, Stall);
        ++m_mended;
    }

private:
    static constexpr qint64 unlimited = std::numeric_limits<qint64>::max();

    void acceptAll()
    {
        std::vector<std::jthread> connections;
        while (!m_ends) {
            pollfd waiting{m_listener.get(), POLLIN, 0};
            if (::poll(&waiting, 1, 20) > 0)
                connections.emplace_back([this, client = ::accept(m_listener.get(), nullptr,
                                                                  nullptr)] { serve(client); });
        }
    }

    void serve(int clientDescriptor)
    {
        const LoopbackSocket client(clientDescriptor);
        const LoopbackSocket server(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        const sockaddr_in address = loopbackAddress(m_serverPort);
        bool goesOn = ::connect(server.get(), reinterpret_cast<const sockaddr *>(&address),
                                sizeof address) == 0;
        const int hungUp = m_hungUp;
        while (goesOn && !m_ends && hungUp == m_hungUp) {
            pollfd ends[] = {{client.get(), POLLIN, 0}, {server.get(), POLLIN, 0}};
            ::poll(ends, 2, 20);
            if (ends[0].revents)
                goesOn = pass(client.get(), server.get(), false);
            if (goesOn && ends[1].revents)
                goesOn = pass(server.get(), client.get(), true);
        }
    }

    /// Passes bytes on, of an answer as many as the fault allows. False when the connection ends.
    bool pass(int from, int to, bool isAnswer)
    {
        std::array<char, 16384> bytes;
        const ssize_t count = ::recv(from, bytes.data(), bytes.size(), 0);
        if (count <= 0)
            return false;
        const qint64 allowed =
            isAnswer ? std::clamp<qint64>(m_limit - m_passed, 0, count) : qint64(count);
        if (isAnswer)
            m_passed += allowed;
        if (::send(to, bytes.data(), static_cast<size_t>(allowed), MSG_NOSIGNAL) != allowed)
            return false;
        if (allowed == count)
            return true;
        if (m_isOnce)
            m_limit = unlimited;
        const int mended = m_mended;
        while (m_fault == Stall && !m_ends && mended == m_mended)
            ::usleep(5000);
        return false;
    }

    std::uint16_t m_serverPort;
    ListeningSocket m_listener;
    std::atomic<bool> m_ends = false;
    std::atomic<Fault> m_fault = Stall;
    std::atomic<bool> m_isOnce = false;
    std::atomic<qint64> m_passed = 0;
    std::atomic<qint64> m_limit = unlimited;
    std::atomic<int> m_mended = 0;
    std::atomic<int> m_hungUp = 0;
    std::thread m_thread;
};
