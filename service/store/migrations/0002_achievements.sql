-- Each player's achievements: the highest percentage reported for each identifier, which never goes down,
-- and the time of the latest report in milliseconds.
CREATE TABLE achievements (
    player_id        TEXT NOT NULL REFERENCES players (id),
    identifier       TEXT NOT NULL,
    percent_complete DOUBLE PRECISION NOT NULL,
    reported_at      BIGINT NOT NULL,
    PRIMARY KEY (player_id, identifier)
);
