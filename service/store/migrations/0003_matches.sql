-- Turn-based matches of two seats. The data is kept as base64 text so that both databases hold it alike.
-- waiting is 1 while the second seat waits for automatic matching; turn_deadline is 0 when the turn cannot
-- run out, otherwise the millisecond at which it falls through to the next seat of fall_through.
CREATE TABLE matches (
    id            TEXT PRIMARY KEY,
    status        INTEGER NOT NULL,
    created_at    BIGINT NOT NULL,
    updated_at    BIGINT NOT NULL,
    current_seat  INTEGER NOT NULL,
    turn_deadline BIGINT NOT NULL,
    fall_through  TEXT NOT NULL,
    turn_timeout  BIGINT NOT NULL,
    data          TEXT NOT NULL,
    message_key   TEXT NOT NULL,
    message_args  TEXT NOT NULL,
    waiting       INTEGER NOT NULL
);
CREATE INDEX matches_waiting ON matches (waiting, created_at);
CREATE INDEX matches_deadline ON matches (turn_deadline);

CREATE TABLE match_seats (
    match_id     TEXT NOT NULL REFERENCES matches (id),
    seat         INTEGER NOT NULL,
    player_id    TEXT REFERENCES players (id),
    status       INTEGER NOT NULL,
    outcome      INTEGER NOT NULL,
    last_turn_at BIGINT NOT NULL,
    removed      INTEGER NOT NULL,
    PRIMARY KEY (match_id, seat)
);
CREATE INDEX match_seats_player ON match_seats (player_id);
