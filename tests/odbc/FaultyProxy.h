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
        std::vector<std::thread> connections;
        while (!m_ends) {
            pollfd waiting{m_listener.get(), POLLIN, 0};
            if (::poll(&waiting, 1, 20) > 0)
                connections.emplace_back([this, client = ::accept(m_listener.get(), nullptr,
                                                                  nullptr)] { pass(client); });
        }
        for (std::thread &connection : connections)
            connection.join();
    }

    void pass(int clientDescriptor)
    {
        const LoopbackSocket client(clientDescriptor);
        const LoopbackSocket server(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        const sockaddr_in address = loopbackAddress(m_serverPort);
        if (::connect(server.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) !=
            0)
            return;
        const int mended = m_mended;
        bool hasStalled = false;
        while (!m_ends && !(hasStalled && mended != m_mended)) {
            std::array<pollfd, 2> ends = {pollfd{client.get(), POLLIN, 0},
                                          pollfd{server.get(), POLLIN, 0}};
            if (hasStalled || ::poll(ends.data(), ends.size(), 20) == 0) {
                ::usleep(hasStalled ? 5000 : 0);
                continue;
            }
            if (ends[0].revents && !copy(client.get(), server.get()))
                return;
            if (!ends[1].revents)
                continue;
            switch (answer(server.get(), client.get())) {
            case Passed:
                break;
            case Stalled:
                hasStalled = true;
                break;
            case Ended:
                return;
            }
        }
    }

    static bool copy(int from, int to)
    {
        std::array<char, 16384> bytes;
        const ssize_t count = ::recv(from, bytes.data(), bytes.size(), 0);
        return count > 0 &&
               ::send(to, bytes.data(), static_cast<size_t>(count), MSG_NOSIGNAL) == count;
    }

    enum Answer { Passed, Stalled, Ended };
    /// Passes on as many bytes of an answer as the fault allows.
    Answer answer(int server, int client)
    {
        std::array<char, 16384> bytes;
        const ssize_t count = ::recv(server, bytes.data(), bytes.size(), 0);
        if (count <= 0)
            return Ended;
        const qint64 allowed = std::clamp<qint64>(m_limit - m_passed, 0, count);
        m_passed += allowed;
        if (allowed > 0 &&
            ::send(client, bytes.data(), static_cast<size_t>(allowed), MSG_NOSIGNAL) != allowed)
            return Ended;
        if (allowed == count)
            return Passed;
        if (m_isOnce)
            m_limit = unlimited;
        return m_fault == Cut ? Ended : Stalled;
    }

    std::uint16_t m_serverPort;
    ListeningSocket m_listener;
    std::atomic<bool> m_ends = false;
    std::atomic<Fault> m_fault = Stall;
    std::atomic<bool> m_isOnce = false;
    std::atomic<qint64> m_passed = 0;
    std::atomic<qint64> m_limit = unlimited;
    std::atomic<int> m_mended = 0;
    std::thread m_thread;
};
