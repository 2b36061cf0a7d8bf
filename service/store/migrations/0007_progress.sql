-- Each player's saved progress: the game's progress document as the player's device sent it, numbered from 1
-- per player. Only the newest five versions are kept; level and gold are copied out of the document for the
-- list of versions and for the check that no save mints gold.
CREATE TABLE progress_versions (
    player_id TEXT NOT NULL REFERENCES players (id),
    version   BIGINT NOT NULL,
    saved_at  BIGINT NOT NULL,
    level     BIGINT NOT NULL,
    gold      BIGINT NOT NULL,
    document  TEXT NOT NULL,
    PRIMARY KEY (player_id, version)
);
