-- Players and their credentials. The identifier never changes; the display name may.
CREATE TABLE players (
    id            TEXT PRIMARY KEY,
    display_name  TEXT NOT NULL,
    name_key      TEXT NOT NULL UNIQUE,
    password_hash TEXT NOT NULL,
    created_at    BIGINT NOT NULL,
    event_seq     BIGINT NOT NULL DEFAULT 0,
    acked_seq     BIGINT NOT NULL DEFAULT 0
);

-- Bearer tokens, stored as SHA-256 digests of the token.
CREATE TABLE tokens (
    token_hash TEXT PRIMARY KEY,
    player_id  TEXT NOT NULL REFERENCES players (id),
    created_at BIGINT NOT NULL,
    expires_at BIGINT NOT NULL
);
CREATE INDEX tokens_by_player ON tokens (player_id);

CREATE TABLE friend_requests (
    id          TEXT PRIMARY KEY,
    from_id     TEXT NOT NULL REFERENCES players (id),
    to_id       TEXT NOT NULL REFERENCES players (id),
    message     TEXT NOT NULL,
    status      TEXT NOT NULL,
    created_at  BIGINT NOT NULL,
    answered_at BIGINT
);
CREATE INDEX friend_requests_to ON friend_requests (to_id, status);
CREATE INDEX friend_requests_from ON friend_requests (from_id, status);

-- One row per direction: (a, b) and (b, a).
CREATE TABLE friendships (
    player_id  TEXT NOT NULL REFERENCES players (id),
    friend_id  TEXT NOT NULL REFERENCES players (id),
    created_at BIGINT NOT NULL,
    PRIMARY KEY (player_id, friend_id)
);

-- The latest reported score of each player. reached_at is the moment the value was first reached,
-- in microseconds; it breaks ties.
CREATE TABLE scores (
    player_id  TEXT PRIMARY KEY REFERENCES players (id),
    value      BIGINT NOT NULL,
    context    BIGINT NOT NULL,
    reached_at BIGINT NOT NULL,
    updated_at BIGINT NOT NULL
);

-- Events waiting for delivery, numbered per player by players.event_seq.
CREATE TABLE events (
    player_id  TEXT NOT NULL REFERENCES players (id),
    seq        BIGINT NOT NULL,
    kind       TEXT NOT NULL,
    payload    TEXT NOT NULL,
    created_at BIGINT NOT NULL,
    PRIMARY KEY (player_id, seq)
);
