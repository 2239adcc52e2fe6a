#pragma once

#include "support/TemporaryFolder.h"

#include <luhost/Session.h>

#include <gtest/gtest.h>

#include <memory>

namespace test
{

/// A session for each test, based in a folder of its own. What the test leaves alive at its end is a failure.
class SessionTest : public testing::Test
{
protected:
    SessionTest()
    {
        m_config.baseFolder = m_folder.Path();
        StartSession();
    }

    ~SessionTest() override { EndSession(); }

    void RestartSession()
    {
        EndSession();
        StartSession();
    }

    void EndSession()
    {
        if (m_session) {
            const luhost::Session::LeftOver left = m_session->Close();
            EXPECT_EQ(left.objects, 0u) << left.holders;
            EXPECT_EQ(left.holders, "");
            m_session.reset();
        }
    }

    luhost::Session& GetSession() { return *m_session; }

    TemporaryFolder m_folder;
    luhost::SessionConfig m_config;

private:
    void StartSession()
    {
        m_session = std::make_unique<luhost::Session>(m_config);
        EXPECT_TRUE(m_session->GetProblems().empty());
    }

    std::unique_ptr<luhost::Session> m_session;
};

} // namespace test
