-- Live matches of two players, kept only while they last: a row goes when a player leaves, when the match is
-- cancelled or declined, or when it goes stale. found_at is 0 until the second seat is taken.
CREATE TABLE live_matches (
    id         TEXT PRIMARY KEY,
    created_at BIGINT NOT NULL,
    found_at   BIGINT NOT NULL,
    automatic  INTEGER NOT NULL
);
CREATE INDEX live_matches_waiting ON live_matches (automatic, found_at, created_at);

-- status: 0 the automatic seat waits, 1 invited, 2 seated, 3 connected to the relay.
CREATE TABLE live_seats (
    match_id  TEXT NOT NULL REFERENCES live_matches (id),
    seat      INTEGER NOT NULL,
    player_id TEXT REFERENCES players (id),
    status    INTEGER NOT NULL,
    PRIMARY KEY (match_id, seat)
);
CREATE INDEX live_seats_player ON live_seats (player_id);
