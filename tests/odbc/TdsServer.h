#pragma once

#include "Sockets.h"

#include <QByteArray>

#include <atomic>
#include <poll.h>
#include <thread>

/// Plays a SQL Server that cannot encrypt, up to the login: it says so when a client asks, and
/// keeps what the client sends then.
class TdsServer
{
public:
    TdsServer()
        : m_thread([this] { acceptAll(); })
    {}
    ~TdsServer() { stop(); }
    TdsServer(const TdsServer &) = delete;
    TdsServer &operator=(const TdsServer &) = delete;

    std::uint16_t port() const { return m_listener.port(); }

    /// Ends the server; all that it has received.
    const QByteArray &stop()
    {
        m_ends = true;
        if (m_thread.joinable())
            m_thread.join();
        return m_received;
    }

    /// How a login packet holds a password.
    static QByteArray disguised(const QString &password)
    {
        QByteArray bytes(reinterpret_cast<const char *>(password.utf16()), password.size() * 2);
        for (char &byte : bytes) {
            const auto value = static_cast<unsigned char>(byte);
            byte = static_cast<char>((value << 4 | value >> 4) ^ 0xA5);
        }
        return bytes;
    }

private:
    void acceptAll()
    {
        while (!m_ends) {
            if (isReady(m_listener.get()))
                serve(LoopbackSocket(::accept(m_listener.get(), nullptr, nullptr)));
        }
    }

    void serve(const LoopbackSocket &client)
    {
        // Type 4 (answer), last packet, 26 bytes: version at 11, encryption (2: not supported) at
        // 17, each from the packet's 9th byte on.
        static const QByteArray cannotEncrypt = QByteArray::fromHex("0401001a00000100"
                                                                    "00000b0006"
                                                                    "0100110001"
                                                                    "ff"
                                                                    "0f0007d00000"
                                                                    "02");
        char bytes[4096];
        while (!m_ends) {
            if (!isReady(client.get()))
                continue;
            const ssize_t count = ::recv(client.get(), bytes, sizeof bytes, 0);
            if (count <= 0)
                return;
            m_received.append(bytes, count);
            constexpr char preLogin = 0x12;
            if (bytes[0] != preLogin)
                return; // the login: all has been said
            ::send(client.get(), cannotEncrypt.constData(), size_t(cannotEncrypt.size()),
                   MSG_NOSIGNAL);
        }
    }

    static bool isReady(int descriptor)
    {
        pollfd waiting{descriptor, POLLIN, 0};
        return ::poll(&waiting, 1, 20) > 0;
    }

    ListeningSocket m_listener;
    QByteArray m_received;
    std::atomic<bool> m_ends = false;
    std::thread m_thread;
};
